#include "local/RequestStream.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>

namespace fernhollow::backend {

RequestStream::RequestStream(socket_t socket, std::size_t maximumBytes, std::chrono::milliseconds patience)
    : socket_(socket), maximumBytes_(maximumBytes), patience_(patience) {
    begin();
}

void RequestStream::begin() {
    bytesLeft_ = maximumBytes_;
    deadline_ = std::chrono::steady_clock::now() + patience_;
}

ssize_t RequestStream::read(char* buffer, std::size_t size) {
    if (bytesLeft_ == 0 || (taken_ == filled_ && !fill())) {
        hasFailed_ = true;
        return -1;
    }
    const auto count = std::min({size, filled_ - taken_, bytesLeft_});
    std::memcpy(buffer, buffer_.data() + taken_, count);
    taken_ += count;
    bytesLeft_ -= count;
    return static_cast<ssize_t>(count);
}

bool RequestStream::fill() {
    const auto received = wait(POLLIN) ? recv(socket_, buffer_.data(), buffer_.size(), 0) : -1;
    taken_ = 0;
    filled_ = received > 0 ? static_cast<std::size_t>(received) : 0;
    return filled_ > 0;
}

ssize_t RequestStream::write(const char* data, std::size_t size) {
    std::size_t sent = 0;
    while (sent < size) {
        if (!wait(POLLOUT)) {
            return -1;
        }
        const auto count = send(socket_, data + sent, size - sent, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count < 0 && errno != EAGAIN && errno != EINTR) {
            return -1;
        }
        sent += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    return static_cast<ssize_t>(sent);
}

bool RequestStream::wait(short event) const {
    using namespace std::chrono;
    pollfd state{socket_, event, 0};
    int ready = 0;
    do {
        const auto left = duration_cast<milliseconds>(deadline_ - steady_clock::now()).count();
        ready = left > 0 ? poll(&state, 1, static_cast<int>(left)) : 0;
    } while (ready < 0 && errno == EINTR);
    return ready > 0;
}

// Nobody asks whose request it is.
void RequestStream::get_remote_ip_and_port(std::string& address, int& port) const {
    address.clear();
    port = 0;
}

void RequestStream::get_local_ip_and_port(std::string& address, int& port) const {
    address.clear();
    port = 0;
}

} // namespace fernhollow::backend
