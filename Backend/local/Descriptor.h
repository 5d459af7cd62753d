#pragma once

#include <unistd.h>
#include <utility>

namespace fernhollow::backend {

/// Owns a file descriptor.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(other.release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    ~Descriptor() {
        if (number_ >= 0) {
            close(number_);
        }
    }

    int get() const { return number_; }
    int release() { return std::exchange(number_, -1); }

private:
    int number_ = -1;
};

} // namespace fernhollow::backend
