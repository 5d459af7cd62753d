// Preloaded into the program under test: leads its connections to the backend that is compiled into it to
// the port in REDIRECTED_BACKEND, so that tests run side by side and never meet the backend of whoever runs
// them. Without the variable, or with port 0, there is no backend: connections are refused.

#include <arpa/inet.h>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr int compiledInPort = 54321;

bool isBackend(const sockaddr* address, socklen_t length, sockaddr_in& backend) {
    if (address == nullptr || length < sizeof backend || address->sa_family != AF_INET) {
        return false;
    }
    std::memcpy(&backend, address, sizeof backend);
    return ntohs(backend.sin_port) == compiledInPort && ntohl(backend.sin_addr.s_addr) == INADDR_LOOPBACK;
}

} // namespace

extern "C" int connect(int socket, const sockaddr* address, socklen_t length) {
    sockaddr_in backend{};
    if (isBackend(address, length, backend)) {
        const char* text = std::getenv("REDIRECTED_BACKEND");
        const int port = text != nullptr ? std::atoi(text) : 0;
        if (port == 0) {
            errno = ECONNREFUSED;
            return -1;
        }
        backend.sin_port = htons(static_cast<in_port_t>(port));
        return static_cast<int>(syscall(SYS_connect, socket, &backend, sizeof backend));
    }
    return static_cast<int>(syscall(SYS_connect, socket, address, length));
}
