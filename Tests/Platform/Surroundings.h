#pragma once

#include "Support/Testing.h"

#include <list>
#include <sstream>
#include <string_view>

namespace fernhollow::tests {

/// A home of its own with an environment that names no display, no session and no locale; both are as
/// they were afterwards.
class Surroundings : public TemporaryHome {
public:
    Surroundings() {
        for (const char* variable : {"DISPLAY", "WAYLAND_DISPLAY", "XDG_SESSION_TYPE", "XDG_DATA_HOME",
                                     "XDG_DATA_DIRS", "LC_ALL", "LC_MESSAGES", "LANG"}) {
            set(variable, std::nullopt);
        }
    }

    void set(const char* variable, std::optional<std::string> value) {
        guards_.emplace_front(variable, std::move(value)); // the first guard, the last to go, knows the old
    }

    /// Writes a file below the home, with the folders above it.
    void write(const std::filesystem::path& below, std::string_view text) const {
        std::filesystem::create_directories((path() / below).parent_path());
        std::ofstream(path() / below, std::ios::binary) << text;
    }

    /// How many lines of the debug log contain `text`.
    int logged(std::string_view text) const {
        std::istringstream lines(log());
        int count = 0;
        for (std::string line; std::getline(lines, line);) {
            count += line.find(text) != std::string::npos ? 1 : 0;
        }
        return count;
    }

private:
    std::list<EnvironmentGuard> guards_;
};

/// Runs the event loop until nothing more comes.
inline void settle() {
    const QDeadlineTimer end(100);
    waitUntil([&] { return end.hasExpired(); });
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

} // namespace fernhollow::tests
