#include "Support/ForgetfulDisk.h"

#include "Support/TemporaryHome.h"

#include <fstream>
#include <new>

namespace fernhollow::tests {
namespace fs = std::filesystem;

/// The files as SQLite sees them: the disk's own methods around those of the real system.
struct ForgetfulDisk::Files {
    struct File {
        sqlite3_file base;
        ForgetfulDisk* disk;
        fs::path* path; // absent for temporary files
        sqlite3_file* real() { return reinterpret_cast<sqlite3_file*>(this + 1); }
    };

    static File& of(sqlite3_file* file) { return *reinterpret_cast<File*>(file); }
    static sqlite3_file* real(sqlite3_file* file) { return of(file).real(); }
    static ForgetfulDisk& disk(sqlite3_vfs* vfs) { return *static_cast<ForgetfulDisk*>(vfs->pAppData); }

    static int open(sqlite3_vfs* vfs, const char* name, sqlite3_file* handle, int flags, int* outFlags) {
        File& file = *new (handle) File{};
        ForgetfulDisk& disk = Files::disk(vfs);
        const int code = disk.real_->xOpen(disk.real_, name, file.real(), flags, outFlags);
        if (file.real()->pMethods == nullptr) {
            return code;
        }
        file.base.pMethods = &methods;
        file.disk = &disk;
        if (name != nullptr) {
            file.path = new fs::path(name);
            const std::lock_guard lock(disk.mutex_);
            if (disk.opened_.insert(name).second && fs::file_size(name) > 0) {
                disk.durable_[name] = contents(name); // was there before the disk
            }
        }
        return code;
    }

    static int remove(sqlite3_vfs* vfs, const char* name, int syncsFolder) {
        ForgetfulDisk& disk = Files::disk(vfs);
        const std::lock_guard lock(disk.mutex_);
        if (disk.isFrozen_) {
            return SQLITE_IOERR_DELETE;
        }
        if (!disk.isCut_) {
            disk.durable_.erase(name);
        }
        return disk.real_->xDelete(disk.real_, name, syncsFolder);
    }

    static int close(sqlite3_file* file) {
        const int code = real(file)->pMethods->xClose(real(file));
        delete of(file).path;
        return code;
    }

    static int write(sqlite3_file* file, const void* data, int size, sqlite3_int64 offset) {
        ForgetfulDisk& disk = *of(file).disk;
        sqlite3_int64 length = 0;
        real(file)->pMethods->xFileSize(real(file), &length);
        const std::lock_guard lock(disk.mutex_);
        if (disk.isFrozen_) {
            return SQLITE_IOERR_WRITE;
        }
        if (disk.isFull_ && offset + size > length) {
            return SQLITE_FULL;
        }
        return real(file)->pMethods->xWrite(real(file), data, size, offset);
    }

    static int truncate(sqlite3_file* file, sqlite3_int64 size) {
        ForgetfulDisk& disk = *of(file).disk;
        const std::lock_guard lock(disk.mutex_);
        return disk.isFrozen_ ? SQLITE_IOERR_TRUNCATE : real(file)->pMethods->xTruncate(real(file), size);
    }

    static int sync(sqlite3_file* file, int /*flags*/) {
        ForgetfulDisk& disk = *of(file).disk;
        const std::lock_guard lock(disk.mutex_);
        if (disk.isFrozen_) {
            return SQLITE_IOERR_FSYNC;
        }
        if (const fs::path* path = of(file).path; path != nullptr && !disk.isCut_) {
            sqlite3_int64 length = 0;
            real(file)->pMethods->xFileSize(real(file), &length);
            std::string& durable = disk.durable_[*path];
            durable.resize(static_cast<std::size_t>(length));
            real(file)->pMethods->xRead(real(file), durable.data(), static_cast<int>(length), 0);
            ++disk.syncs_[*path];
        }
        return SQLITE_OK; // the real disk never loses its power here
    }

    /// What the disk does not change is asked of the real file.
    template<auto method, class... Arguments>
    static auto ask(sqlite3_file* file, Arguments... arguments) {
        return (real(file)->pMethods->*method)(real(file), arguments...);
    }

    static const sqlite3_io_methods methods;
};

const sqlite3_io_methods ForgetfulDisk::Files::methods = {
    .iVersion = 2, // without memory-mapped reads, which would pass the disk by
    .xClose = close,
    .xRead = ask<&sqlite3_io_methods::xRead>,
    .xWrite = write,
    .xTruncate = truncate,
    .xSync = sync,
    .xFileSize = ask<&sqlite3_io_methods::xFileSize>,
    .xLock = ask<&sqlite3_io_methods::xLock>,
    .xUnlock = ask<&sqlite3_io_methods::xUnlock>,
    .xCheckReservedLock = ask<&sqlite3_io_methods::xCheckReservedLock>,
    .xFileControl = ask<&sqlite3_io_methods::xFileControl>,
    .xSectorSize = ask<&sqlite3_io_methods::xSectorSize>,
    .xDeviceCharacteristics = ask<&sqlite3_io_methods::xDeviceCharacteristics>,
    .xShmMap = ask<&sqlite3_io_methods::xShmMap>,
    .xShmLock = ask<&sqlite3_io_methods::xShmLock>,
    .xShmBarrier = ask<&sqlite3_io_methods::xShmBarrier>,
    .xShmUnmap = ask<&sqlite3_io_methods::xShmUnmap>,
    .xFetch = nullptr,
    .xUnfetch = nullptr,
};

ForgetfulDisk::ForgetfulDisk() : real_(sqlite3_vfs_find("unix")) {
    vfs_ = *real_;
    vfs_.pNext = nullptr;
    vfs_.zName = "forgetful";
    vfs_.pAppData = this;
    vfs_.szOsFile = static_cast<int>(sizeof(Files::File)) + real_->szOsFile;
    vfs_.xOpen = Files::open;
    vfs_.xDelete = Files::remove;
    mount();
}

ForgetfulDisk::~ForgetfulDisk() {
    sqlite3_vfs_unregister(&vfs_);
    sqlite3_vfs_register(real_, 1);
}

void ForgetfulDisk::mount() {
    sqlite3_vfs_register(&vfs_, 1);
}

void ForgetfulDisk::setFrozen(bool isFrozen) {
    const std::lock_guard lock(mutex_);
    isFrozen_ = isFrozen;
}

void ForgetfulDisk::forget(const fs::path& folder) {
    const std::lock_guard lock(mutex_);
    const auto isBelow = [&](const fs::path& path) { return path.native().starts_with(folder.native()); };
    std::erase_if(durable_, [&](const auto& entry) { return isBelow(entry.first); });
    std::erase_if(opened_, isBelow);
}

void ForgetfulDisk::cutPower() {
    const std::lock_guard lock(mutex_);
    isCut_ = true;
}

void ForgetfulDisk::restorePower() {
    const std::lock_guard lock(mutex_);
    for (const fs::path& path : opened_) {
        fs::remove(path.native() + "-shm"); // was memory
        if (!durable_.contains(path)) {
            fs::remove(path);
        }
    }
    // In place: new files would be taken for copies.
    for (const auto& [path, bytes] : durable_) {
        std::ofstream(path, std::ios::binary) << bytes;
    }
    isCut_ = false;
}

int ForgetfulDisk::syncs(const std::string& ending) const {
    const std::lock_guard lock(mutex_);
    int count = 0;
    for (const auto& [path, syncs] : syncs_) {
        count += path.native().ends_with(ending) ? syncs : 0;
    }
    return count;
}

void ForgetfulDisk::setFull(bool isFull) {
    const std::lock_guard lock(mutex_);
    isFull_ = isFull;
}

} // namespace fernhollow::tests
