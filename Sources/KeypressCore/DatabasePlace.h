#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <sys/types.h>
#include <utility>

namespace fernhollow {

/// The companion files of an open database: its log and its shared memory, recognised by inode, not by name.
///
/// A database whose file was moved away leaves its companions behind under the old name. A new database there
/// would take them for its own: it would mix the log's contents into itself, and shorten the shared memory
/// that the old connection still reads. Owned by DailyCountsDatabase and used on its thread.
class DatabasePlace {
public:
    /// Takes the companions that exist now.
    explicit DatabasePlace(std::filesystem::path database);

    /// False when the log was deleted: its contents then last only as long as this process.
    bool hasLog() const;

    /// Moves the companions out of the way of the next database. Logs nothing and never fails.
    void clear() const;

    /// Renames a database and its companions: appends a dot and `reason` to the name, and a number where
    /// that name is taken. Returns the new name. Throws std::filesystem::filesystem_error.
    static std::filesystem::path setAside(const std::filesystem::path& database, const std::string& reason);

    /// Renames a database that is not open, and its companions.
    /// Throws std::filesystem::filesystem_error.
    static void move(const std::filesystem::path& database, const std::filesystem::path& name);

private:
    using FileId = std::pair<dev_t, ino_t>;
    static std::optional<FileId> idOf(const std::filesystem::path& file);
    std::filesystem::path companion(const char* suffix) const;

    std::filesystem::path database_;
    std::optional<FileId> log_;
    std::optional<FileId> sharedMemory_;
};

} // namespace fernhollow
