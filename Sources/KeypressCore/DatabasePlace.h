#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <sys/types.h>
#include <utility>

namespace fernhollow {

/// The companions of an open database in the file system, told apart from others of the same name.
///
/// A database whose file was moved away leaves its log and its shared memory behind under the old name. A new
/// database in its place would take them for its own: their contents would be mixed into it, and its opening
/// would shorten the memory that the old connection still reads. Owned by DailyCountsDatabase, whose thread
/// is this class's too.
class DatabasePlace {
public:
    /// The companions are those that exist now.
    explicit DatabasePlace(std::filesystem::path database);

    /// False when the log was deleted, so that the end of this process would be the end of its contents.
    bool hasLog() const;

    /// Takes what the database left behind out of the way of the next one; logs nothing and never fails.
    void clear() const;

    /// Renames a database and its companions to the name with a dot and `reason` behind it, or with a number
    /// behind that where there is such a file already. Returns the new name.
    /// Throws std::filesystem::filesystem_error.
    static std::filesystem::path setAside(const std::filesystem::path& database, const std::string& reason);

    /// Renames a database, which is not open, and its companions.
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
