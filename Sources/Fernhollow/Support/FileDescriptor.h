#pragma once

#include <string_view>
#include <utility>

namespace fernhollow {

/// Owns an open file, a socket or an end of a pipe, or nothing.
class FileDescriptor {
public:
    FileDescriptor() = default;
    /// Takes the result of a system call; a negative number, from a call that failed, is nothing.
    explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    ~FileDescriptor() { close(); }

    explicit operator bool() const { return descriptor_ >= 0; }
    int get() const { return descriptor_; }

    /// Gives up ownership and returns the descriptor, which stays open.
    int release() { return std::exchange(descriptor_, -1); }

    /// False, with the reason in errno, when an earlier write turns out to have failed.
    bool close();

private:
    int descriptor_ = -1;
};

/// Writes `bytes`. False, with the reason in errno, when not all of them could be written.
bool writeAll(const FileDescriptor& file, std::string_view bytes);

} // namespace fernhollow
