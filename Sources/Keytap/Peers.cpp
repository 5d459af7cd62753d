#include "Keytap/Peers.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <utility>

namespace fernhollow::keytap {
namespace {

/// Connections that are accepted in one slot; the rest waits in the listening socket.
constexpr int acceptedPerSlot = 16;

/// A peer that does not read fills a few packets of the kernel's memory, not a hundred.
constexpr int sendBuffer = 4096;

} // namespace

Peers::Peers(Descriptor listener, Surroundings surroundings)
    : m_surroundings(std::move(surroundings)), m_listener(std::move(listener)) {
    m_surroundings.poller.watch(m_listener.number(), EPOLLIN, [this] { accept(); });
}

Peers::~Peers() {
    for (const auto& peer : m_peers) {
        m_surroundings.poller.drop(peer.first);
    }
    m_surroundings.poller.drop(m_listener.number());
}

void Peers::setSittings(std::vector<Sitting> sittings) {
    m_sittings = std::move(sittings);
    updateSeats();
}

void Peers::pressed(const std::string& seat, Time at) {
    for (auto& [number, peer] : m_peers) {
        if (peer.seat == seat) {
            peer.tally.press(at);
            startSlot();
        }
    }
}

void Peers::released(const std::string& seat, Time at) {
    for (auto& [number, peer] : m_peers) {
        if (peer.seat == seat) {
            peer.tally.release(at);
        }
    }
}

void Peers::endSlot() {
    const auto now = m_surroundings.now();
    m_surroundings.readDevices();
    m_slotEnd.reset();
    for (auto& [number, peer] : m_peers) {
        peer.packets = 0;
        peer.wasAnswered = false;
        peer.tally.settle(now);
        send(peer);
        listenTo(peer);
    }
    if (std::exchange(m_accepted, 0) >= acceptedPerSlot) {
        m_surroundings.poller.change(m_listener.number(), EPOLLIN);
    }
}

void Peers::accept() {
    startSlot();
    if (++m_accepted >= acceptedPerSlot) {
        m_surroundings.poller.change(m_listener.number(), 0);
    }
    Descriptor socket(accept4(m_listener.number(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
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
    m_surroundings.poller.watch(number, EPOLLIN, [this, number] { serve(number); });
    m_peers.emplace(number, Peer{std::move(socket), credentials.uid, {}, {}});
    updateSeats();
}

std::optional<Refusal> Peers::refusal(uid_t user) const {
    const auto isOfUser = [user](const auto& sitting) { return sitting.user == user; };
    if (std::ranges::none_of(m_sittings, isOfUser)) {
        return Refusal::noLocalSession;
    }
    if (std::ranges::none_of(m_sittings, [&](const auto& s) { return isOfUser(s) && s.isActive; })) {
        return Refusal::sessionNotActive;
    }
    const auto ofUser =
        std::ranges::count_if(m_peers, [user](const auto& p) { return p.second.user == user; });
    if (static_cast<std::size_t>(ofUser) >= peersPerUser) {
        return Refusal::tooManyOfUser;
    }
    return m_peers.size() >= peersInAll ? std::optional(Refusal::tooManyInAll) : std::nullopt;
}

std::string Peers::seatOf(uid_t user) const {
    const auto found = std::ranges::find_if(
        m_sittings, [user](const auto& s) { return s.user == user && s.isActive && !s.isLocked; });
    return found == m_sittings.end() ? std::string() : found->seat;
}

void Peers::updateSeats() {
    // What was pressed until now belongs to those that were in front until now.
    m_surroundings.readDevices();
    const auto now = m_surroundings.now();
    std::set<std::string> seats;
    for (auto& [number, peer] : m_peers) {
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
    if (seats != m_seats) {
        m_seats = std::move(seats);
        m_surroundings.seatsChanged(m_seats);
    }
}

void Peers::serve(int number) {
    auto& peer = m_peers.at(number);
    if (std::exchange(peer.isFull, false)) {
        send(peer);
        listenTo(peer);
        return;
    }
    std::array<std::byte, sizeof(RepeatSettings) + 1> packet{}; // a byte more, to see what is too long
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
        peer.tally.setRepeat(*settings, m_surroundings.now());
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
    const auto now = m_surroundings.now();
    m_surroundings.readDevices();
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
    // A peer whose answers find no room is not asked for more.
    std::uint32_t events = peer.packets < packetsPerSlot ? EPOLLIN : 0;
    if (peer.isFull) {
        events = EPOLLOUT;
    }
    m_surroundings.poller.change(peer.socket.number(), events);
    // With a held key time alone fills the tally.
    if (peer.tally.isRepeating()) {
        startSlot();
    }
}

void Peers::refuse(const Descriptor& socket, Refusal refusal) {
    ::send(socket.number(), &refusal, sizeof refusal, MSG_DONTWAIT | MSG_NOSIGNAL);
}

void Peers::drop(int number) {
    m_surroundings.poller.drop(number);
    m_peers.erase(number);
    updateSeats();
}

void Peers::startSlot() {
    if (!m_slotEnd) {
        const Time slot = slotLength;
        m_slotEnd = (m_surroundings.now() / slot + 1) * slot;
    }
}

} // namespace fernhollow::keytap
