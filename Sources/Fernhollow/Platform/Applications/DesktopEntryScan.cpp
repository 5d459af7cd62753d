#include "Platform/Applications/DesktopEntryScan.h"

#include "Support/FileDescriptor.h"

#include <algorithm>
#include <cstddef>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace fernhollow {
namespace fs = std::filesystem;
namespace {

// Deeper than real folders are nested; it also stops at links that lead in circles.
constexpr int deepest = 4;
// Heavily translated entries have some 100 kB; a larger file is not a desktop entry.
constexpr std::size_t largest = 1 << 20;
constexpr std::string_view suffix = ".desktop";

std::timespec lastChange(const fs::path& folder) {
    struct stat status{};
    return ::stat(folder.c_str(), &status) == 0 ? status.st_mtim : std::timespec{};
}

std::optional<std::string> readFile(const fs::path& path) {
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file) {
        return std::nullopt;
    }
    struct stat status{};
    std::string text;
    if (::fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode)) {
        text.resize(std::min(static_cast<std::size_t>(status.st_size), largest));
        const ssize_t size = ::read(file.get(), text.data(), text.size());
        text.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    }
    return text;
}

} // namespace

WatchedFolder::WatchedFolder(fs::path folder) : folder_(std::move(folder)), seen_(lastChange(folder_)) {}

bool WatchedFolder::hasChanged() const {
    const std::timespec now = lastChange(folder_);
    return now.tv_sec != seen_.tv_sec || now.tv_nsec != seen_.tv_nsec;
}

std::optional<DesktopEntryFile> DesktopEntryScan::File::read(std::span<const std::string> locales) const {
    const auto text = readFile(path);
    return text ? std::optional(parseDesktopEntry(*text, locales)) : std::nullopt;
}

DesktopEntryScan::DesktopEntryScan(std::span<const fs::path> folders) {
    for (const fs::path& folder : folders) {
        const auto begin = static_cast<std::ptrdiff_t>(files_.size());
        scan(folder, {}, 0);
        std::ranges::sort(files_.begin() + begin, files_.end(), {}, &File::id);
    }
}

void DesktopEntryScan::scan(const fs::path& folder, const std::string& idPrefix, int depth) {
    // Noted before the listing, so that a file that arrives meanwhile is found the next time.
    watched_.emplace_back(folder);
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        std::error_code unreadable;
        std::string name = entry->path().filename();
        if (entry->is_directory(unreadable)) {
            if (depth < deepest) {
                scan(entry->path(), idPrefix + name + '-', depth + 1);
            }
        } else if (name.ends_with(suffix) && name.size() > suffix.size()) {
            name.resize(name.size() - suffix.size());
            std::string id = idPrefix + name;
            if (ids_.insert(id).second) {
                files_.push_back({std::move(id), entry->path()});
            }
        }
    }
}

} // namespace fernhollow
