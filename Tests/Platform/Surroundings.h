#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace fernhollow::test {

/// A home of its own with an environment that names no display, no session and no locale; both are as
/// they were afterwards.
class Surroundings {
public:
    Surroundings();
    Surroundings(const Surroundings&) = delete;
    Surroundings& operator=(const Surroundings&) = delete;
    ~Surroundings();

    void set(const char* variable, const std::string& value);
    const std::filesystem::path& home() const { return home_; }

    /// Writes a file below the home, with the folders above it.
    std::filesystem::path write(const std::filesystem::path& below, std::string_view text) const;

    /// How many lines of the debug log contain `text`.
    int logged(std::string_view text) const;

private:
    struct Saved {
        std::string variable;
        bool present;
        std::string value;
    };
    void save(const char* variable);

    std::filesystem::path home_;
    std::vector<Saved> saved_;
};

/// Runs the event loop until `condition` holds; false when it does not within a generous time.
bool eventually(const std::function<bool()>& condition);

/// Runs the event loop until nothing more comes.
void settle();

} // namespace fernhollow::test
