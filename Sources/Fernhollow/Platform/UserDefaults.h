#pragma once

#include <optional>
#include <string>

namespace fernhollow {

/// Small values that are kept from run to run: texts and data by key, in one INI file in the user's
/// configuration directory. A value that cannot be read is absent. A failure is logged. Main thread
/// only.
class UserDefaults {
public:
    static std::optional<std::string> string(const std::string& key);
    static std::optional<std::string> data(const std::string& key);
    static void setString(const std::string& key, const std::string& value);
    static void setData(const std::string& key, const std::string& value);
    static void remove(const std::string& key);
};

} // namespace fernhollow
