#include "Updates/VerifiedCopy.h"

#include "Support/FileDescriptor.h"
#include "Updates/UpdateError.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <string>
#include <sys/mman.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace fernhollow {
namespace fs = std::filesystem;
namespace {

constexpr std::string_view temporaryPrefix = ".fernhollow-update-";
constexpr std::string_view temporaryPattern = "XXXXXX";

[[noreturn]] void fail() {
    throw std::system_error(errno, std::generic_category());
}

/// An open file whose operations throw std::system_error.
class File : public FileDescriptor {
public:
    explicit File(int descriptor) : FileDescriptor(descriptor) {
        if (descriptor < 0) {
            fail();
        }
    }

    struct stat status() const {
        struct stat status{};
        if (::fstat(get(), &status) != 0) {
            fail();
        }
        return status;
    }

    void synchronise() const {
        if (::fsync(get()) != 0) {
            fail();
        }
    }
};

/// A new file, created by this object and deleted with it unless it was renamed.
class TemporaryFile {
public:
    explicit TemporaryFile(const fs::path& folder)
        : path_((folder / temporaryPrefix).native() + std::string(temporaryPattern)),
          file_(::mkostemp(path_.data(), O_CLOEXEC)) {}
    ~TemporaryFile() {
        if (!path_.empty()) {
            ::unlink(path_.c_str());
        }
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const File& file() const { return file_; }

    void become(const fs::path& target) {
        if (std::rename(path_.c_str(), target.c_str()) != 0) {
            fail();
        }
        path_.clear();
    }

private:
    std::string path_;
    File file_;
};

void copyAll(const File& from, const File& to) {
    std::array<char, std::size_t{1} << 16> buffer{};
    for (;;) {
        const ssize_t got = ::read(from.get(), buffer.data(), buffer.size());
        if (got == 0) {
            return;
        }
        if (got > 0) {
            if (!writeAll(to, {buffer.data(), static_cast<std::size_t>(got)})) {
                fail();
            }
        } else if (errno != EINTR) {
            fail();
        }
    }
}

bool passes(const File& file, const ByteCheck& isGenuine) {
    const auto size = static_cast<std::size_t>(file.status().st_size);
    if (size == 0) {
        return isGenuine({});
    }
    void* bytes = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file.get(), 0);
    if (bytes == MAP_FAILED) {
        fail();
    }
    const bool result = isGenuine({static_cast<const char*>(bytes), size});
    ::munmap(bytes, size);
    return result;
}

bool isLeftover(const fs::path& path) {
    const std::string name = path.filename().native();
    struct stat status{};
    return name.starts_with(temporaryPrefix) &&
           name.size() == temporaryPrefix.size() + temporaryPattern.size() &&
           ::lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == ::geteuid();
}

void removeLeftovers(const fs::path& folder) {
    std::error_code error; // a folder that cannot be listed may still be written to
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        if (isLeftover(entry->path())) {
            ::unlink(entry->path().c_str());
        }
    }
}

void replace(const fs::path& source, const fs::path& target, mode_t mode, const ByteCheck& isGenuine) {
    const fs::path folder = target.parent_path();
    removeLeftovers(folder);
    const File original(::open(source.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (!S_ISREG(original.status().st_mode)) {
        throw UpdateError(UpdateError::Reason::install, "The downloaded update is not a file.");
    }
    TemporaryFile copy(folder);
    copyAll(original, copy.file());
    if (::fchmod(copy.file().get(), mode) != 0) {
        fail();
    }
    copy.file().synchronise();
    if (!passes(copy.file(), isGenuine)) {
        throw UpdateError(UpdateError::Reason::install,
                          "The update changed on its way to " + folder.native() + " and was not installed.");
    }
    copy.become(target);
}

} // namespace

void placeVerifiedCopy(const fs::path& source, const fs::path& target, mode_t mode,
                       const ByteCheck& isGenuine) {
    try {
        replace(source, target, mode, isGenuine);
    } catch (const std::system_error& error) { // std::filesystem's errors, too
        throw UpdateError(UpdateError::Reason::install, "The update could not be put into " +
                                                            target.parent_path().native() + ": " +
                                                            error.code().message() + ".");
    }
    // The rename has happened, and failing to sync the folder does not undo it.
    if (const FileDescriptor folder(::open(target.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        folder) {
        ::fsync(folder.get());
    }
}

} // namespace fernhollow
