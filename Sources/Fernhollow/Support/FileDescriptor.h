#pragma once

#include <string_view>
#include <utility>

namespace fernhollow {

/// Owns an open file, a socket or an end of a pipe, or nothing.
class FileDescriptor {
public:
    FileDescriptor() = default;
    /// Of what a system call has opened; one that failed gives a negative number, which is nothing.
    explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    ~FileDescriptor() { close(); }

    explicit operator bool() const { return descriptor_ >= 0; }
    int get() const { return descriptor_; }

    /// Leaves it open for the rest of the process.
    int release() { return std::exchange(descriptor_, -1); }

    /// False, with the reason in errno, when a write that came before has failed.
    bool close();

private:
    int descriptor_ = -1;
};

/// Writes all of `bytes`; false, with the reason in errno, when not all could be written.
bool writeAll(const FileDescriptor& file, std::string_view bytes);

} // namespace fernhollow
