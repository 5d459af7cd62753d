#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <httplib.h>
#include <string>

namespace fernhollow::backend {

/// One client's socket as the HTTP library reads and writes it, within limits: a request, from its first
/// byte to the last of its answer, has so many bytes and so much time, however it trickles in.
///
/// Used by one thread at a time. Does not own the socket.
class RequestStream : public httplib::Stream {
public:
    RequestStream(socket_t socket, std::size_t maximumBytes, std::chrono::milliseconds patience);

    /// The next request may begin: its limits start afresh.
    void begin();
    /// Bytes of the next request came along with this one.
    bool hasMore() const { return taken_ < filled_; }

    /// The client left, or a limit was reached, in the middle of a request.
    bool hasFailed() const { return hasFailed_; }

    bool is_readable() const override { return true; }
    bool is_writable() const override { return true; }
    ssize_t read(char* buffer, std::size_t size) override;
    ssize_t write(const char* data, std::size_t size) override;
    void get_remote_ip_and_port(std::string& address, int& port) const override;
    void get_local_ip_and_port(std::string& address, int& port) const override;
    socket_t socket() const override { return socket_; }

private:
    bool fill();
    bool wait(short event) const;

    socket_t socket_;
    std::size_t maximumBytes_;
    std::chrono::milliseconds patience_;
    std::size_t bytesLeft_ = 0;
    std::chrono::steady_clock::time_point deadline_;
    std::array<char, 4096> buffer_{};
    std::size_t taken_ = 0;
    std::size_t filled_ = 0;
    bool hasFailed_ = false;
};

} // namespace fernhollow::backend
