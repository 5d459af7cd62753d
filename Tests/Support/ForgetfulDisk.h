#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <mutex>
#include <set>
#include <string>

namespace fernhollow::tests {

/// A disk under SQLite that forgets at a power cut whatever was not synced.
///
/// While one exists, every database that is opened lies on it; of several, on the one mounted last. Writes
/// reach the real files at once, as they reach the memory of a system; beside them the disk keeps what each
/// file held when it was last synced. After cutPower() nothing becomes durable any more. restorePower() puts
/// the durable contents back in place; before it every database has to be closed. Databases on any thread;
/// the lock is the disk's only one.
class ForgetfulDisk {
public:
    ForgetfulDisk();
    ~ForgetfulDisk();
    ForgetfulDisk(const ForgetfulDisk&) = delete;
    ForgetfulDisk& operator=(const ForgetfulDisk&) = delete;

    /// Databases that are opened from now on lie on this disk.
    void mount();

    void cutPower();
    void restorePower();

    /// From now on, or no longer, nothing changes a file: all stays as a killed program leaves it.
    void setFrozen(bool isFrozen);

    /// Files below this folder were replaced or removed without SQLite; what is there is durable.
    void forget(const std::filesystem::path& folder);

    /// How often a file whose name ends like this was synced since the disk exists.
    int syncs(const std::string& ending) const;

    /// From now on, or no longer, everything that would make a file longer finds the disk full.
    void setFull(bool isFull);

private:
    struct Files;
    sqlite3_vfs vfs_{};
    sqlite3_vfs* real_;

    mutable std::mutex mutex_;
    std::map<std::filesystem::path, std::string> durable_;
    std::map<std::filesystem::path, int> syncs_;
    std::set<std::filesystem::path> opened_; // all that a power cut may change
    bool isCut_ = false;
    bool isFull_ = false;
    bool isFrozen_ = false;
};

} // namespace fernhollow::tests
