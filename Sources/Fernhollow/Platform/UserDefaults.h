#pragma once

#include <optional>
#include <string>

namespace fernhollow {

/// Small values that outlive the program: texts and data by key, in one INI file in the user's
/// configuration directory. Main thread only. A value that cannot be written is logged with the file.
class UserDefaults {
public:
    static std::optional<std::string> string(const std::string& key);
    static std::optional<std::string> data(const std::string& key);
    static void setString(const std::string& key, const std::string& value);
    static void setData(const std::string& key, const std::string& value);
    static void remove(const std::string& key);
};

} // namespace fernhollow
