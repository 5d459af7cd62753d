#include "Keytap/Peers.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <utility>

namespace fernhollow::keytap {
namespace {

/// How many connections are accepted in one slot; the others wait in the listening socket.
constexpr int acceptedPerSlot = 16;

/// In bytes. Small, so that a peer that does not read fills only a few packets of the kernel's memory.
constexpr int sendBuffer = 4096;

} // namespace

Peers::Peers(Descriptor listener, Surroundings surroundings)
    : surroundings_(std::move(surroundings)), listener_(std::move(listener)) {
    surroundings_.poller.watch(listener_.number(), EPOLLIN, [this] { accept(); });
}

Peers::~Peers() {
    for (const auto& peer : peers_) {
        surroundings_.poller.drop(peer.first);
    }
    surroundings_.poller.drop(listener_.number());
}

void Peers::setSittings(std::vector<Sitting> sittings) {
    sittings_ = std::move(sittings);
    updateSeats();
}

void Peers::pressed(const std::string& seat, Time at) {
    for (auto& [number, peer] : peers_) {
        if (peer.seat == seat) {
            peer.tally.press(at);
            startSlot();
        }
    }
}

void Peers::released(const std::string& seat, Time at) {
    for (auto& [number, peer] : peers_) {
        if (peer.seat == seat) {
            peer.tally.release(at);
        }
    }
}

void Peers::endSlot() {
    const auto now = surroundings_.now();
    surroundings_.readDevices();
    slotEnd_.reset();
    for (auto& [number, peer] : peers_) {
        peer.packets = 0;
        peer.wasAnswered = false;
        peer.tally.settle(now);
        send(peer);
        listenTo(peer);
    }
    if (std::exchange(accepted_, 0) >= acceptedPerSlot) {
        surroundings_.poller.change(listener_.number(), EPOLLIN);
    }
}

void Peers::accept() {
    startSlot();
    if (++accepted_ >= acceptedPerSlot) {
        surroundings_.poller.change(listener_.number(), 0);
    }
    Descriptor socket(accept4(listener_.number(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    ucred credentials{};
    socklen_t size = sizeof credentials;
    if (socket.number() < 0 ||
        getsockopt(socket.number(), SOL_SOCKET, SO_PEERCRED, &credentials, &size) < 0) {
        return;
    }
    if (const auto reason = refusal(credentials.uid)) {
        refuse(socket, *reason);
        return;
    }
    const int number = socket.number();
    setsockopt(number, SOL_SOCKET, SO_SNDBUF, &sendBuffer, sizeof sendBuffer);
    surroundings_.poller.watch(number, EPOLLIN, [this, number] { serve(number); });
    peers_.emplace(number, Peer{std::move(socket), credentials.uid, {}, {}});
    updateSeats();
}

std::optional<Refusal> Peers::refusal(uid_t user) const {
    const auto isOfUser = [user](const auto& sitting) { return sitting.user == user; };
    if (std::ranges::none_of(sittings_, isOfUser)) {
        return Refusal::noLocalSession;
    }
    if (std::ranges::none_of(sittings_, [&](const auto& s) { return isOfUser(s) && s.isActive; })) {
        return Refusal::sessionNotActive;
    }
    const auto ofUser =
        std::ranges::count_if(peers_, [user](const auto& p) { return p.second.user == user; });
    if (static_cast<std::size_t>(ofUser) >= peersPerUser) {
        return Refusal::tooManyOfUser;
    }
    return peers_.size() >= peersInAll ? std::optional(Refusal::tooManyInAll) : std::nullopt;
}

std::string Peers::seatOf(uid_t user) const {
    const auto found = std::ranges::find_if(
        sittings_, [user](const auto& s) { return s.user == user && s.isActive && !s.isLocked; });
    return found == sittings_.end() ? std::string() : found->seat;
}

void Peers::updateSeats() {
    // Presses until now belong to the sessions that were in front until now.
    surroundings_.readDevices();
    const auto now = surroundings_.now();
    std::set<std::string> seats;
    for (auto& [number, peer] : peers_) {
        auto seat = seatOf(peer.user);
        if (seat != peer.seat) {
            peer.tally.release(now); // The key-up goes to another session.
            peer.seat = std::move(seat);
            startSlot();
        }
        if (!peer.seat.empty()) {
            seats.insert(peer.seat);
        }
    }
    if (seats != seats_) {
        seats_ = std::move(seats);
        surroundings_.seatsChanged(seats_);
    }
}

void Peers::serve(int number) {
    auto& peer = peers_.at(number);
    if (std::exchange(peer.isFull, false)) {
        send(peer);
        listenTo(peer);
        return;
    }
    std::array<std::byte, sizeof(RepeatSettings) + 1> packet{}; // one byte more, to notice longer packets
    const auto size = recv(number, packet.data(), packet.size(), MSG_DONTWAIT);
    if (size < 0 && (errno == EAGAIN || errno == EINTR)) {
        return;
    }
    if (size <= 0) {
        drop(number);
        return;
    }
    if (!take(peer, std::span(packet).first(static_cast<std::size_t>(size)))) {
        refuse(peer.socket, Refusal::notUnderstood);
        drop(number);
        return;
    }
    startSlot();
    ++peer.packets;
    listenTo(peer);
}

bool Peers::take(Peer& peer, std::span<const std::byte> packet) {
    if (const auto settings = valueOf<RepeatSettings>(packet)) {
        peer.tally.setRepeat(*settings, surroundings_.now());
        return settings->isPossible();
    }
    if (valueOf<std::uint8_t>(packet) != deliverNow) {
        return false;
    }
    peer.owesAnswer = true;
    if (!std::exchange(peer.wasAnswered, true)) {
        answer(peer);
    }
    return true;
}

void Peers::answer(Peer& peer) {
    const auto now = surroundings_.now();
    surroundings_.readDevices();
    peer.tally.settle(now);
    send(peer);
}

void Peers::send(Peer& peer) {
    const auto count = peer.tally.pending();
    if (peer.isFull || peer.seat.empty() || (count == 0 && !peer.owesAnswer)) {
        return;
    }
    if (::send(peer.socket.number(), &count, sizeof count, MSG_DONTWAIT | MSG_NOSIGNAL) == sizeof count) {
        peer.tally.setDelivered();
        peer.owesAnswer = false;
    } else {
        peer.isFull = errno == EAGAIN;
    }
}

void Peers::listenTo(const Peer& peer) {
    // While a peer's socket is full, we read no more from it.
    std::uint32_t events = peer.packets < packetsPerSlot ? EPOLLIN : 0;
    if (peer.isFull) {
        events = EPOLLOUT;
    }
    surroundings_.poller.change(peer.socket.number(), events);
    // While a key is held, the tally grows with time alone.
    if (peer.tally.isRepeating()) {
        startSlot();
    }
}

void Peers::refuse(const Descriptor& socket, Refusal refusal) {
    const int number = socket.number();
    ::send(number, &refusal, sizeof refusal, MSG_DONTWAIT | MSG_NOSIGNAL);
    // If the socket were closed with bytes unread, its peer would get an error instead of the reason.
    shutdown(number, SHUT_RD);
    std::array<std::byte, 1> unread{};
    while (recv(number, unread.data(), unread.size(), MSG_DONTWAIT) > 0) {
    }
}

void Peers::drop(int number) {
    surroundings_.poller.drop(number);
    peers_.erase(number);
    updateSeats();
}

void Peers::startSlot() {
    if (!slotEnd_) {
        const Time slot = slotLength;
        slotEnd_ = (surroundings_.now() / slot + 1) * slot;
    }
}

} // namespace fernhollow::keytap
