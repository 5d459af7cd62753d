#pragma once

#include "Keytap/Devices.h"
#include "Keytap/Protocol.h"
#include "Keytap/Sessions.h"
#include "Keytap/Tally.h"

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace fernhollow::keytap {

/// The programs that receive counts: accepts their connections, keeps a Tally for each and sends it at the
/// end of a slot.
///
/// A peer's tally grows only while its user's session is in front at a seat and not locked, and nothing is
/// sent to it at other times. Sending never waits: presses that a peer does not take stay in its tally. A
/// peer that sends too much waits for the next slot. Owned by the service, in its only thread.
class Peers : public PressListener {
public:
    struct Surroundings {
        Poller& poller;
        std::function<Time()> now;
        /// Reports every press that the kernel has already received; called before counts are sent.
        std::function<void()> readDevices;
        /// Called when the seats that have a peer to count for change.
        std::function<void(const std::set<std::string>&)> seatsChanged;
    };

    /// Accepts peers from `listener`, a listening socket of type SOCK_SEQPACKET.
    Peers(Descriptor listener, Surroundings surroundings);
    ~Peers() override;

    void setSittings(std::vector<Sitting> sittings);
    void pressed(const std::string& seat, Time at) override;
    void released(const std::string& seat, Time at) override;

    /// When endSlot() is due; empty while there is nothing to send.
    std::optional<Time> slotEnd() const { return slotEnd_; }

    /// Sends the gathered presses and listens again to peers that sent too much.
    void endSlot();

    bool isEmpty() const { return peers_.empty(); }

private:
    struct Peer {
        Descriptor socket;
        uid_t user;
        std::string seat; // empty while the user is not in front, or the screen is locked
        Tally tally;
        int packets = 0;          // in this slot
        bool wasAnswered = false; // in this slot
        bool owesAnswer = false;  // the peer waits for a packet, even of zero presses
        bool isFull = false;      // its socket takes no more
    };
    using Table = std::map<int, Peer>; // by the socket's number

    void accept();
    std::optional<Refusal> refusal(uid_t user) const;
    std::string seatOf(uid_t user) const;
    void updateSeats();
    void serve(int number);
    /// False when the packet is not one that a peer may send.
    bool take(Peer& peer, std::span<const std::byte> packet);
    void answer(Peer& peer);
    void send(Peer& peer);
    void listenTo(const Peer& peer);
    void refuse(const Descriptor& socket, Refusal refusal);
    void drop(int number);
    void startSlot();

    Surroundings surroundings_;
    Descriptor listener_;
    int accepted_ = 0; // in this slot
    Table peers_;
    std::vector<Sitting> sittings_;
    std::set<std::string> seats_;
    std::optional<Time> slotEnd_;
};

} // namespace fernhollow::keytap
