#include "Support/UserDirectories.h"

#include <cerrno>
#include <cstdlib>
#include <pwd.h>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace fernhollow {
namespace fs = std::filesystem;
namespace {

fs::path xdgDirectory(const char* variable, std::string_view belowHome) {
    if (const char* value = std::getenv(variable); value != nullptr && *value == '/') {
        return value;
    }
    fs::path home = homeDirectory();
    if (home.empty()) {
        throw fs::filesystem_error("no home directory",
                                   std::make_error_code(std::errc::no_such_file_or_directory));
    }
    return home / belowHome;
}

} // namespace

fs::path homeDirectory() {
    if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0') {
        return home;
    }
    const passwd* user = ::getpwuid(::getuid());
    return user != nullptr && user->pw_dir != nullptr ? user->pw_dir : "";
}

fs::path applicationSupportDirectory() {
    return xdgDirectory("XDG_DATA_HOME", ".local/share");
}

fs::path configurationDirectory() {
    return xdgDirectory("XDG_CONFIG_HOME", ".config");
}

void createPrivateDirectories(const fs::path& folder) {
    if (folder.has_parent_path() && !fs::exists(folder.parent_path())) {
        createPrivateDirectories(folder.parent_path());
    }
    if (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) {
        throw fs::filesystem_error("cannot create folder", folder,
                                   std::error_code(errno, std::generic_category()));
    }
    if (!fs::is_directory(folder)) {
        throw fs::filesystem_error("not a folder", folder, std::make_error_code(std::errc::not_a_directory));
    }
}

} // namespace fernhollow
