#pragma once

#include "Keytap/Time.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>

namespace fernhollow::keytap {

/// Owns a file descriptor and closes it.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept;
    Descriptor& operator=(Descriptor&& other) noexcept;
    ~Descriptor();

    int number() const { return number_; }

private:
    int number_ = -1;
};

/// Waits for descriptors and calls the callbacks of those that are ready (epoll, level-triggered).
///
/// A callback may drop any descriptor, including its own. The service has one poller, which
/// outlives all that register with it.
class Poller {
public:
    using Callback = std::function<void()>;

    Poller();

    /// Calls `ready` whenever `descriptor` has one of `events` (EPOLLIN, EPOLLOUT).
    void watch(int descriptor, std::uint32_t events, Callback ready);
    void change(int descriptor, std::uint32_t events);
    void drop(int descriptor);

    /// Waits until a descriptor is ready, at most for `limit`; without a limit as long as it takes.
    void wait(std::optional<Time> limit);

private:
    Descriptor epoll_;
    std::map<int, Callback> callbacks_;
};

} // namespace fernhollow::keytap
