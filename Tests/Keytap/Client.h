#pragma once

#include "Keytap/Poller.h"
#include "Keytap/Protocol.h"

#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <system_error>

namespace fernhollow::keytap {

/// A connection to a service, with waits of limited length.
class Client {
public:
    explicit Client(const char* path) : socket_(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0)) {
        sockaddr_un address{AF_UNIX, {}};
        std::strncpy(address.sun_path, path, sizeof address.sun_path - 1);
        if (connect(socket_.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) < 0) {
            throw std::system_error(errno, std::generic_category(), path);
        }
    }

    /// What the service says of this connection.
    struct Answers {
        std::uint64_t sum = 0;
        int packets = 0;
        std::uint8_t refusal = 0;
        bool isClosed = false;
    };

    /// Takes packets until none comes for `quiet`.
    Answers take(std::chrono::milliseconds quiet = std::chrono::milliseconds(0)) {
        Answers answers;
        while (!answers.isClosed && takeOne(answers, quiet)) {
        }
        return answers;
    }

    bool takeOne(Answers& answers, std::chrono::milliseconds limit) {
        pollfd ready{socket_.number(), POLLIN, 0};
        if (poll(&ready, 1, static_cast<int>(limit.count())) <= 0) {
            return false;
        }
        std::array<std::byte, 64> packet{};
        const auto size = recv(socket_.number(), packet.data(), packet.size(), 0);
        const auto content = std::span(packet).first(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
        answers.isClosed = size <= 0;
        answers.sum += valueOf<std::uint64_t>(content).value_or(0);
        answers.refusal = valueOf<std::uint8_t>(content).value_or(answers.refusal);
        answers.packets += size > 0;
        return true;
    }

    template<typename Value>
    bool send(Value value) {
        return ::send(socket_.number(), &value, sizeof value, MSG_DONTWAIT | MSG_NOSIGNAL) == sizeof value;
    }

private:
    Descriptor socket_;
};

} // namespace fernhollow::keytap
