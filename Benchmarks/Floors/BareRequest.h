#pragma once

#include <arpa/inet.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <netinet/in.h>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <unistd.h>

namespace fernhollow::bare {

/// A connection to the backend on this machine and requests to it, with nothing around the sockets.
class Connection {
public:
    explicit Connection(int port) : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<in_port_t>(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        expect(::connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0);
    }
    ~Connection() { ::close(socket_); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// Sends one request and returns when its answer has come.
    void post(std::string_view path, std::string_view body) {
        const std::string request = "POST /rest/v1/" + std::string(path) +
                                    " HTTP/1.1\r\nHost: 127.0.0.1\r\n" +
                                    "Content-Type: application/json\r\napikey: " FERNHOLLOW_SUPABASE_ANON_KEY
                                    "\r\nAuthorization: Bearer " FERNHOLLOW_SUPABASE_ANON_KEY
                                    "\r\nPrefer: resolution=merge-duplicates\r\nContent-Length: " +
                                    std::to_string(body.size()) + "\r\n\r\n" + std::string(body);
        expect(::send(socket_, request.data(), request.size(), MSG_NOSIGNAL) ==
               static_cast<ssize_t>(request.size()));
        std::string answer;
        std::size_t wanted = std::string::npos;
        while (answer.size() < wanted) {
            char buffer[65536];
            const ssize_t received = ::recv(socket_, buffer, sizeof buffer, 0);
            expect(received > 0);
            answer.append(buffer, static_cast<std::size_t>(received));
            if (const auto end = answer.find("\r\n\r\n"); wanted == std::string::npos && end != answer.npos) {
                expect(answer.starts_with("HTTP/1.1 2"));
                const auto length = answer.find("Content-Length: ");
                wanted =
                    end + 4 + (length < end ? std::strtoul(answer.c_str() + length + 16, nullptr, 10) : 0);
            }
        }
    }

private:
    static void expect(bool condition) {
        if (!condition) {
            std::perror("the backend");
            std::exit(EXIT_FAILURE);
        }
    }

    int socket_;
};

} // namespace fernhollow::bare
