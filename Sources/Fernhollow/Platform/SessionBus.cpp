#include "Platform/SessionBus.h"

#include "Support/DebugLog.h"
#include "Support/FileDescriptor.h"

#include <QByteArray>
#include <QDBusConnection>
#include <QList>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

namespace fernhollow {
namespace {

constexpr const char* addressVariable = "DBUS_SESSION_BUS_ADDRESS";

// This file is not a socket, so a connection is refused at once.
constexpr const char* refusingAddress = "unix:path=/dev/null";

/// The name of the local socket in `address`, in the form of connect(): an abstract name begins with NUL.
/// Empty for another kind of address.
QByteArray socketName(const QByteArray& address) {
    if (!address.startsWith("unix:")) {
        return {};
    }
    for (const QByteArray& pair : address.mid(5).split(',')) {
        const qsizetype equals = pair.indexOf('=');
        QByteArray value = QByteArray::fromPercentEncoding(pair.mid(equals + 1));
        if (pair.startsWith("path=")) {
            return value;
        }
        if (pair.startsWith("abstract=")) {
            return '\0' + value;
        }
        if (pair == "runtime=yes") {
            return qgetenv("XDG_RUNTIME_DIR") + "/bus";
        }
    }
    return {};
}

QList<QByteArray> addresses() {
    const QByteArray list = qgetenv(addressVariable);
    return list.isEmpty() ? QList<QByteArray>{"unix:runtime=yes"} : list.split(';');
}

void limitWaits(int socket, std::chrono::milliseconds limit) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(limit);
    const timeval wait{seconds.count(), std::chrono::microseconds(limit - seconds).count()};
    ::setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &wait, sizeof wait); // also of connect()
    ::setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &wait, sizeof wait);
}

/// Whether the socket `name` takes connections but does not answer the bus's handshake within `limit`.
bool isSilent(const QByteArray& name, std::chrono::milliseconds limit) {
    sockaddr_un peer{};
    peer.sun_family = AF_UNIX;
    const auto length = static_cast<std::size_t>(name.size());
    const FileDescriptor file(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const int socket = file.get();
    if (!file || length == 0 || length >= sizeof peer.sun_path) {
        return false;
    }
    std::memcpy(peer.sun_path, name.constData(), length);
    limitWaits(socket, limit);
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + length);
    if (::connect(socket, reinterpret_cast<const sockaddr*>(&peer), size) != 0) {
        return errno == EAGAIN; // the queue of connections is full
    }
    const QByteArray greeting =
        '\0' + QByteArray("AUTH EXTERNAL ") + QByteArray::number(::getuid()).toHex() + "\r\n";
    std::array<char, 64> answer{};
    return (::send(socket, greeting.constData(), static_cast<std::size_t>(greeting.size()), MSG_NOSIGNAL) <
                0 ||
            ::recv(socket, answer.data(), answer.size(), 0) < 0) &&
           errno == EAGAIN;
}

// The bus library reads the variable once in a process. Afterwards it is restored for child processes.
void refuseSessionBus() {
    const bool wasSet = qEnvironmentVariableIsSet(addressVariable);
    const QByteArray before = qgetenv(addressVariable);
    qputenv(addressVariable, refusingAddress);
    const QString name = QStringLiteral("refused");
    QDBusConnection::connectToBus(QDBusConnection::SessionBus, name);
    QDBusConnection::disconnectFromBus(name);
    if (wasSet) {
        qputenv(addressVariable, before);
    } else {
        qunsetenv(addressVariable);
    }
}

} // namespace

void avoidSilentSessionBus(std::chrono::milliseconds limit) {
    for (const QByteArray& address : addresses()) {
        if (isSilent(socketName(address), limit)) {
            debugLog("[SessionBus] The session bus does not answer; Fernhollow goes on without it");
            refuseSessionBus();
            return;
        }
    }
}

} // namespace fernhollow
