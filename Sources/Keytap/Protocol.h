#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>

/// The packets between the key-blind service and the program.
///
/// The socket is SOCK_SEQPACKET, so each packet arrives whole, and its length says what it is. Numbers have
/// the machine's own byte order, because both ends are on it.
///
///   to the service 8 bytes RepeatSettings: the session's delay and rate, two unsigned 32-bit numbers
///                       1 byte    `deliverNow`: send the gathered presses at once, even if there are none
///   from the service    8 bytes   presses since the last packet, an unsigned 64-bit number
///                       1 byte    a Refusal; the connection ends after it
namespace fernhollow::keytap {

constexpr const char* socketPath = "/run/fernhollow-keytap.socket";
constexpr const char* socketUnit = "fernhollow-keytap.socket";

/// Counts are sent at the ends of slots of this length, so they do not reveal the time between two
/// presses. The first `deliverNow` in a slot is answered at once, the others at its end, and none while
/// the user's session is not in front or its screen is locked.
constexpr std::chrono::milliseconds slotLength{100};

/// How many packets of one peer are read in a slot; the others wait in the socket for the next slot.
constexpr int packetsPerSlot = 4;

constexpr std::size_t peersPerUser = 4;
constexpr std::size_t peersInAll = 64;

constexpr std::uint8_t deliverNow = 1;

/// How the session repeats a held key.
struct RepeatSettings {
    std::uint32_t delay = 600; ///< milliseconds from the press to its first repeat
    std::uint32_t rate = 25;   ///< repeats a second after that; 0 when keys do not repeat

    /// False for values that no desktop would set.
    bool isPossible() const { return delay <= 60'000 && rate <= 1'000; }
};
static_assert(sizeof(RepeatSettings) == 8);

/// Why the service ends a connection. A new one needs a sentence in `explanation`.
enum class Refusal : std::uint8_t {
    noLocalSession = 1,   ///< the user has no session at a seat of this machine
    sessionNotActive = 2, ///< another session is in front at the user's seat
    tooManyOfUser = 3,    ///< the user has `peersPerUser` connections
    tooManyInAll = 4,     ///< there are `peersInAll` connections
    notUnderstood = 5,    ///< the peer sent something other than RepeatSettings or `deliverNow`
};

/// One sentence for the log; null for a byte that is not a Refusal.
constexpr const char* explanation(Refusal refusal) {
    switch (refusal) {
    case Refusal::noLocalSession:
        return "The user has no session at a seat of this machine.";
    case Refusal::sessionNotActive:
        return "Another session is in front at the user's seat.";
    case Refusal::tooManyOfUser:
        return "The user has too many connections.";
    case Refusal::tooManyInAll:
        return "There are too many connections.";
    case Refusal::notUnderstood:
        return "The service did not understand what was sent.";
    }
    return nullptr;
}

/// The value in `packet`; nothing when the length is not that of a Value.
template<typename Value>
std::optional<Value> valueOf(std::span<const std::byte> packet) {
    if (packet.size() != sizeof(Value)) {
        return std::nullopt;
    }
    Value value{};
    std::memcpy(&value, packet.data(), sizeof value);
    return value;
}

} // namespace fernhollow::keytap
