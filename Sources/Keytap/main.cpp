// The key-blind service: counts the key presses at the seats of users whose programs ask for it, and
// sends them the number. systemd starts it when a program connects to its socket. It ends when it has
// had no peer for half a minute.

#include "Keytap/Devices.h"
#include "Keytap/Peers.h"
#include "Keytap/Sessions.h"

#include <csignal>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <sys/epoll.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <systemd/sd-daemon.h>

namespace fernhollow::keytap {
namespace {

constexpr Time patience = std::chrono::seconds(30); // how long it runs without a peer

Descriptor listeningSocket() {
    constexpr int isListening = 1;
    if (sd_listen_fds(1) != 1 ||
        sd_is_socket(SD_LISTEN_FDS_START, AF_UNIX, SOCK_SEQPACKET, isListening) <= 0) {
        throw std::runtime_error("is started by systemd, by fernhollow-keytap.socket");
    }
    return Descriptor(SD_LISTEN_FDS_START);
}

/// Becomes readable when the service is asked to end.
Descriptor endRequests() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    return Descriptor(signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
}

void run() {
    Poller poller;
    bool isEnding = false;
    const auto requests = endRequests();
    poller.watch(requests.number(), EPOLLIN, [&] { isEnding = true; });

    std::optional<Devices> devices;
    Peers peers(listeningSocket(), {
                                       .poller = poller,
                                       .now = monotonicNow,
                                       .readDevices = [&] { devices->readAll(); },
                                       .seatsChanged = [&](const auto& seats) { devices->setSeats(seats); },
                                   });
    devices.emplace(poller, peers);
    const Sessions sessions(poller, [&](const auto& sittings) { peers.setSittings(sittings); });
    sd_notify(0, "READY=1");

    Time lastPeer = monotonicNow();
    while (!isEnding) {
        const auto now = monotonicNow();
        const auto due = peers.slotEnd();
        if (due && *due <= now) {
            peers.endSlot();
            continue;
        }
        lastPeer = peers.isEmpty() ? lastPeer : now;
        isEnding = now >= lastPeer + patience;
        const auto next = due ? due : peers.isEmpty() ? std::optional(lastPeer + patience) : std::nullopt;
        poller.wait(next ? std::optional(std::max(*next - now, Time::zero())) : std::nullopt);
    }
    sd_notify(0, "STOPPING=1");
    peers.endSlot();
}

} // namespace
} // namespace fernhollow::keytap

int main() {
    // Keeps debuggers of the same user out, and prevents an image of the memory after a crash.
    prctl(PR_SET_DUMPABLE, 0);
    try {
        fernhollow::keytap::run();
        return 0;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "fernhollow-keytap: %s\n", failure.what());
        return 1;
    }
}
