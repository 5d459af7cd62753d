#include "local/IdleConnections.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <system_error>
#include <unistd.h>

namespace fernhollow::backend {

using std::chrono::steady_clock;

IdleConnections::IdleConnections(std::size_t maximum, std::chrono::milliseconds patience, Resume resume)
    : maximum_(maximum), patience_(patience), resume_(std::move(resume)) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw std::system_error(errno, std::generic_category(), "pipe");
    }
    outlet_ = Descriptor(ends[0]);
    inlet_ = Descriptor(ends[1]);
    thread_ = std::thread(&IdleConnections::run, this);
}

IdleConnections::~IdleConnections() {
    add(Descriptor());
    thread_.join();
}

void IdleConnections::add(Descriptor socket) {
    // A number goes through a pipe in one piece.
    const int number = socket.get();
    if (write(inlet_.get(), &number, sizeof number) == sizeof number) {
        socket.release();
    }
}

void IdleConnections::run() {
    std::vector<pollfd> watched;
    bool goesOn = true;
    while (goesOn) {
        watched.assign({{outlet_.get(), POLLIN, 0}});
        for (const auto& connection : connections_) {
            watched.push_back({connection.socket.get(), POLLIN, 0});
        }
        if (poll(watched.data(), watched.size(), nextTimeout()) > 0) {
            resumeThose(watched);
            goesOn = watched[0].revents == 0 || takeNew();
        }
        dismissSilent();
    }
}

/// `watched` holds the pipe and then every connection.
void IdleConnections::resumeThose(const std::vector<pollfd>& watched) {
    std::deque<Connection> silent;
    for (std::size_t i = 0; i < connections_.size(); ++i) {
        if (watched[i + 1].revents != 0) {
            resume_(std::move(connections_[i].socket));
        } else {
            silent.push_back(std::move(connections_[i]));
        }
    }
    connections_ = std::move(silent);
}

/// False once it is time to end.
bool IdleConnections::takeNew() {
    std::array<int, 64> numbers{};
    const auto size = read(outlet_.get(), numbers.data(), sizeof numbers);
    const auto count = size > 0 ? static_cast<std::size_t>(size) / sizeof(int) : 0;
    for (std::size_t i = 0; i < count; ++i) {
        connections_.push_back({Descriptor(numbers[i]), steady_clock::now() + patience_});
    }
    return std::find(numbers.begin(), numbers.begin() + count, -1) == numbers.begin() + count;
}

void IdleConnections::dismissSilent() {
    const auto now = steady_clock::now();
    while (!connections_.empty() &&
           (connections_.front().deadline <= now || connections_.size() > maximum_)) {
        connections_.pop_front();
    }
}

int IdleConnections::nextTimeout() const {
    if (connections_.empty()) {
        return -1;
    }
    const auto left = connections_.front().deadline - steady_clock::now();
    const auto whole = std::chrono::ceil<std::chrono::milliseconds>(left).count();
    return whole > 0 ? static_cast<int>(whole) : 0;
}

} // namespace fernhollow::backend
