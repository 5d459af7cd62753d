#include "Keytap/Poller.h"

#include <array>
#include <cerrno>
#include <sys/epoll.h>
#include <system_error>
#include <time.h>
#include <unistd.h>
#include <utility>

namespace fernhollow::keytap {

Time monotonicNow() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::chrono::seconds(now.tv_sec) + Time(now.tv_nsec / 1000);
}

Descriptor::Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
}

Descriptor::~Descriptor() {
    if (number_ >= 0) {
        close(number_);
    }
}

Poller::Poller() : epoll_(epoll_create1(EPOLL_CLOEXEC)) {
    if (epoll_.number() < 0) {
        throw std::system_error(errno, std::generic_category(), "epoll_create1");
    }
}

void Poller::watch(int descriptor, std::uint32_t events, Callback ready) {
    epoll_event event{events, {.fd = descriptor}};
    if (epoll_ctl(epoll_.number(), EPOLL_CTL_ADD, descriptor, &event) < 0) {
        throw std::system_error(errno, std::generic_category(), "epoll_ctl");
    }
    callbacks_[descriptor] = std::move(ready);
}

void Poller::change(int descriptor, std::uint32_t events) {
    epoll_event event{events, {.fd = descriptor}};
    epoll_ctl(epoll_.number(), EPOLL_CTL_MOD, descriptor, &event);
}

void Poller::drop(int descriptor) {
    epoll_ctl(epoll_.number(), EPOLL_CTL_DEL, descriptor, nullptr);
    callbacks_.erase(descriptor);
}

void Poller::wait(std::optional<Time> limit) {
    using std::chrono::milliseconds;
    std::array<epoll_event, 16> events;
    const int timeout = limit ? static_cast<int>(std::chrono::ceil<milliseconds>(*limit).count()) : -1;
    const int count = epoll_wait(epoll_.number(), events.data(), static_cast<int>(events.size()), timeout);
    for (int i = 0; i < count; ++i) {
        // An earlier callback may have dropped this descriptor. The copy keeps a callback alive that drops
        // itself.
        const auto found = callbacks_.find(events.at(static_cast<std::size_t>(i)).data.fd);
        if (found != callbacks_.end()) {
            const auto ready = found->second;
            ready();
        }
    }
}

} // namespace fernhollow::keytap
