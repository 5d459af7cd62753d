// Preloaded into the program under test. It redirects connections to the built-in backend to the port in
// REDIRECTED_BACKEND, and those to the key-blind service to the socket in REDIRECTED_KEYTAP, so that tests
// run side by side and never reach what the machine itself has. Without the first variable, or with port 0,
// there is no backend: connections are refused. Without the second there is no service.

#include <arpa/inet.h>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <netinet/in.h>
#include <string_view>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

constexpr int compiledInPort = 54321;
constexpr std::string_view keytapPath = "/run/fernhollow-keytap.socket";

bool isBackend(const sockaddr* address, socklen_t length, sockaddr_in& backend) {
    if (address == nullptr || length < sizeof backend || address->sa_family != AF_INET) {
        return false;
    }
    std::memcpy(&backend, address, sizeof backend);
    return ntohs(backend.sin_port) == compiledInPort && ntohl(backend.sin_addr.s_addr) == INADDR_LOOPBACK;
}

bool isKeytap(const sockaddr* address, socklen_t length) {
    return address != nullptr && length >= sizeof(sockaddr_un) && address->sa_family == AF_UNIX &&
           std::string_view(reinterpret_cast<const sockaddr_un*>(address)->sun_path) == keytapPath;
}

int connectToKeytap(int socket) {
    const char* path = std::getenv("REDIRECTED_KEYTAP");
    sockaddr_un address{AF_UNIX, {}};
    if (path == nullptr || std::strlen(path) >= sizeof address.sun_path) {
        errno = ENOENT;
        return -1;
    }
    std::strcpy(address.sun_path, path);
    return static_cast<int>(syscall(SYS_connect, socket, &address, sizeof address));
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
    if (isKeytap(address, length)) {
        return connectToKeytap(socket);
    }
    return static_cast<int>(syscall(SYS_connect, socket, address, length));
}
