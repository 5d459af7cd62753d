#pragma once

#include "Platform/Applications/DesktopEntryFile.h"

#include <ctime>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <unordered_set>
#include <vector>

namespace fernhollow {

/// A folder, which need not exist, and its state when this object was made.
class WatchedFolder {
public:
    explicit WatchedFolder(std::filesystem::path folder);

    /// True when a file was added, removed or replaced since then.
    bool hasChanged() const;

private:
    std::filesystem::path folder_;
    std::timespec seen_;
};

/// The desktop-entry files in a list of folders and below them. For each id it has one file, that in the
/// earliest folder. Used once and thrown away.
class DesktopEntryScan {
public:
    struct File {
        std::string id; ///< the path below the folder with hyphens for slashes, without ".desktop"
        std::filesystem::path path;

        /// Nothing when the file cannot be read.
        std::optional<DesktopEntryFile> read(std::span<const std::string> locales) const;
    };

    explicit DesktopEntryScan(std::span<const std::filesystem::path> folders);

    /// By folder, then by id.
    const std::vector<File>& files() const { return files_; }
    std::vector<WatchedFolder> takeWatched() { return std::move(watched_); }

private:
    void scan(const std::filesystem::path& folder, const std::string& idPrefix, int depth);

    std::vector<File> files_;
    std::vector<WatchedFolder> watched_;
    std::unordered_set<std::string> ids_;
};

} // namespace fernhollow
