#include "KeypressCore/DatabasePlace.h"

#include <sys/stat.h>
#include <system_error>

namespace fernhollow {
namespace fs = std::filesystem;
namespace {

constexpr const char* logSuffix = "-wal";
constexpr const char* sharedMemorySuffix = "-shm";

fs::path withSuffix(fs::path file, const std::string& suffix) {
    return file += suffix;
}

fs::path freeName(const fs::path& database, const std::string& reason) {
    const fs::path wanted = withSuffix(database, "." + reason);
    fs::path name = wanted;
    for (int number = 2; fs::exists(name) || fs::exists(withSuffix(name, logSuffix)); ++number) {
        name = withSuffix(wanted, "-" + std::to_string(number));
    }
    return name;
}

} // namespace

DatabasePlace::DatabasePlace(fs::path database)
    : database_(std::move(database)), log_(idOf(companion(logSuffix))),
      sharedMemory_(idOf(companion(sharedMemorySuffix))) {}

auto DatabasePlace::idOf(const fs::path& file) -> std::optional<FileId> {
    struct stat found{};
    return ::stat(file.c_str(), &found) == 0 ? std::optional(FileId(found.st_dev, found.st_ino))
                                             : std::nullopt;
}

fs::path DatabasePlace::companion(const char* suffix) const {
    return withSuffix(database_, suffix);
}

bool DatabasePlace::hasLog() const {
    return idOf(companion(logSuffix)).has_value();
}

void DatabasePlace::clear() const {
    std::error_code ignored; // on failure SQLite copes with the old files, or fails to open the next database
    if (log_ && idOf(companion(logSuffix)) == log_) {
        fs::rename(companion(logSuffix), withSuffix(freeName(database_, "left-behind"), logSuffix), ignored);
    }
    if (sharedMemory_ && idOf(companion(sharedMemorySuffix)) == sharedMemory_) {
        fs::remove(companion(sharedMemorySuffix), ignored);
    }
}

fs::path DatabasePlace::setAside(const fs::path& database, const std::string& reason) {
    const fs::path name = freeName(database, reason);
    move(database, name);
    return name;
}

// The log is moved first: a new database in this place must not find the old one's log.
void DatabasePlace::move(const fs::path& database, const fs::path& name) {
    for (const char* suffix : {logSuffix, sharedMemorySuffix, ""}) {
        if (fs::exists(withSuffix(database, suffix))) {
            fs::rename(withSuffix(database, suffix), withSuffix(name, suffix));
        }
    }
}

} // namespace fernhollow
