#include "Platform/Applications/ApplicationFolders.h"

#include "Support/UserDirectories.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <string_view>

namespace fernhollow {
namespace fs = std::filesystem;

std::vector<fs::path> applicationFolders() {
    std::vector<fs::path> folders;
    const auto add = [&folders](const fs::path& dataFolder) {
        fs::path folder = (dataFolder / "applications").lexically_normal();
        if (dataFolder.is_absolute() && std::ranges::find(folders, folder) == folders.end()) {
            folders.push_back(std::move(folder));
        }
    };

    const fs::path home = homeDirectory();
    const char* dataHome = std::getenv("XDG_DATA_HOME");
    const fs::path userData =
        dataHome != nullptr && *dataHome == '/' ? fs::path(dataHome) : home / ".local/share";
    add(userData);

    const char* value = std::getenv("XDG_DATA_DIRS");
    std::string_view directories = value != nullptr && *value != '\0' ? value : "/usr/local/share:/usr/share";
    while (!directories.empty()) {
        const std::size_t end = std::min(directories.find(':'), directories.size());
        add(directories.substr(0, end));
        directories.remove_prefix(std::min(end + 1, directories.size()));
    }

    add(userData / "flatpak/exports/share");
    add("/var/lib/flatpak/exports/share");
    add("/var/lib/snapd/desktop");
    return folders;
}

} // namespace fernhollow
