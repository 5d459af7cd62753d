#include "Platform/Wayland/KeytapConnection.h"

#include "Support/DebugLog.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <span>
#include <sys/socket.h>
#include <sys/un.h>
#include <utility>

namespace fernhollow {
namespace {

using namespace std::chrono_literals;

// An answer comes at the end of the service's slot at the latest.
constexpr auto answerPatience = keytap::slotLength + 50ms;

// Far more than fingers and held keys do while the program stands still for an hour. A larger number is a
// fault.
constexpr std::uint64_t largestPacket = 200'000;

} // namespace

int KeytapConnection::open() {
    if (socket_) {
        return 0;
    }
    sockaddr_un address{AF_UNIX, {}};
    if (path_.size() >= sizeof address.sun_path) {
        return ENAMETOOLONG;
    }
    std::ranges::copy(path_, address.sun_path);
    FileDescriptor socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!socket || ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) < 0) {
        return errno;
    }
    socket_ = std::move(socket);
    notifier_ = std::make_unique<QSocketNotifier>(socket_.get(), QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(), [this] { receive(); });
    if (repeat_) {
        send(*repeat_);
    }
    return 0;
}

void KeytapConnection::close() {
    if (auto notifier = std::exchange(notifier_, nullptr)) {
        notifier->setEnabled(false);
        notifier.release()->deleteLater(); // it may be the one that is calling us
    }
    socket_ = {};
    settle();
}

void KeytapConnection::setRepeat(keytap::RepeatSettings settings) {
    if (!settings.isPossible()) {
        return;
    }
    repeat_ = settings;
    if (isOpen()) {
        send(settings);
    }
}

void KeytapConnection::deliver(std::function<void()> then) {
    if (!isOpen() || !send(keytap::deliverNow)) {
        then();
        return;
    }
    waiting_.push_back(std::move(then));
    if (!patience_) {
        patience_ = std::make_unique<QTimer>();
        patience_->setSingleShot(true);
        patience_->setTimerType(Qt::PreciseTimer);
        QObject::connect(patience_.get(), &QTimer::timeout, patience_.get(), [this] { settle(); });
    }
    patience_->start(answerPatience);
}

template<typename Value>
bool KeytapConnection::send(const Value& value) {
    return ::send(socket_.get(), &value, sizeof value, MSG_NOSIGNAL) == sizeof value;
}

void KeytapConnection::receive() {
    std::array<std::byte, sizeof(std::uint64_t) + 1> packet{}; // a byte more, to see what is too long
    while (isOpen()) {
        const auto size = ::recv(socket_.get(), packet.data(), packet.size(), 0);
        if (size < 0 && (errno == EAGAIN || errno == EINTR)) {
            return;
        }
        const auto content = std::span(packet).first(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
        if (const auto presses = keytap::valueOf<std::uint64_t>(content)) {
            take(*presses);
        } else if (const auto refusal = keytap::valueOf<std::uint8_t>(content)) {
            end(static_cast<keytap::Refusal>(*refusal));
        } else {
            end(std::nullopt);
        }
    }
}

void KeytapConnection::take(std::uint64_t presses) {
    if (presses > largestPacket) {
        debugLog("[EventTap] The counting service reported " + std::to_string(presses) +
                 " presses at once, which cannot be; they are not counted");
    } else if (const auto onPresses = handlers_.onPresses; presses > 0 && onPresses) { // it may set others
        onPresses(presses);
    }
    settle();
}

void KeytapConnection::end(std::optional<keytap::Refusal> refusal) {
    close();
    if (handlers_.onEnded) {
        const auto onEnded = handlers_.onEnded; // likewise
        onEnded(refusal);
    }
}

void KeytapConnection::settle() {
    if (patience_) {
        patience_->stop();
    }
    for (const auto& then : std::exchange(waiting_, {})) {
        then();
    }
}

} // namespace fernhollow
