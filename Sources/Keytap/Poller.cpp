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

Descriptor::Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
    std::swap(m_number, other.m_number);
    return *this;
}

Descriptor::~Descriptor() {
    if (m_number >= 0) {
        close(m_number);
    }
}

Poller::Poller() : m_epoll(epoll_create1(EPOLL_CLOEXEC)) {
    if (m_epoll.number() < 0) {
        throw std::system_error(errno, std::generic_category(), "epoll_create1");
    }
}

void Poller::watch(int descriptor, std::uint32_t events, Callback ready) {
    epoll_event event{events, {.fd = descriptor}};
    if (epoll_ctl(m_epoll.number(), EPOLL_CTL_ADD, descriptor, &event) < 0) {
        throw std::system_error(errno, std::generic_category(), "epoll_ctl");
    }
    m_callbacks[descriptor] = std::move(ready);
}

void Poller::change(int descriptor, std::uint32_t events) {
    epoll_event event{events, {.fd = descriptor}};
    epoll_ctl(m_epoll.number(), EPOLL_CTL_MOD, descriptor, &event);
}

void Poller::drop(int descriptor) {
    epoll_ctl(m_epoll.number(), EPOLL_CTL_DEL, descriptor, nullptr);
    m_callbacks.erase(descriptor);
}

void Poller::wait(std::optional<Time> limit) {
    using std::chrono::milliseconds;
    std::array<epoll_event, 16> events;
    const int timeout = limit ? static_cast<int>(std::chrono::ceil<milliseconds>(*limit).count()) : -1;
    const int count = epoll_wait(m_epoll.number(), events.data(), static_cast<int>(events.size()), timeout);
    for (int i = 0; i < count; ++i) {
        // An earlier callback may have dropped this one. The copy lives on when a callback drops itself.
        const auto found = m_callbacks.find(events.at(static_cast<std::size_t>(i)).data.fd);
        if (found != m_callbacks.end()) {
            const auto ready = found->second;
            ready();
        }
    }
}

} // namespace fernhollow::keytap
