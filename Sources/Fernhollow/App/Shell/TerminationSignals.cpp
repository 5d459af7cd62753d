#include "App/Shell/TerminationSignals.h"

#include "Support/DebugLog.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>

namespace fernhollow {
namespace {

using namespace std::chrono_literals;

// The main thread takes a signal within milliseconds unless it waits for the session.
constexpr auto takingLimit = 2s;

// The last writes are made by then; those of a slow disk go on when the connections are cut.
constexpr auto endLimit = 2s;

// Longer than the last writes may take, shorter than session managers wait before they kill.
constexpr auto endLimitOnceCut = 8s;

bool isReadable(int file, std::chrono::milliseconds limit) {
    pollfd ready{file, POLLIN, 0};
    return ::poll(&ready, 1, static_cast<int>(limit.count())) > 0;
}

// Connections that other programs made to this one are left out: their peer has no name, and it waits for our
// end.
bool isConnectionOfOurs(int file) {
    sockaddr_storage peer{};
    socklen_t length = sizeof peer;
    if (::getpeername(file, reinterpret_cast<sockaddr*>(&peer), &length) != 0) {
        return false;
    }
    return peer.ss_family != AF_UNIX || length > offsetof(sockaddr_un, sun_path);
}

// Every wait for a display or a bus ends with an error then. Also those that libraries made, which is why
// the files are looked through; a connection that is not the session's has no use any more either.
void cutConnections() {
    const long last = std::min(::sysconf(_SC_OPEN_MAX), 4096L); // the lowest free number is given out first
    for (int file = 0; file < last; ++file) {
        if (isConnectionOfOurs(file)) {
            ::shutdown(file, SHUT_RDWR);
        }
    }
}

} // namespace

TerminationSignals::TerminationSignals() {
    sigemptyset(&set_);
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        sigaddset(&set_, number);
    }
    pthread_sigmask(SIG_BLOCK, &set_, nullptr);
    signals_ = FileDescriptor(::signalfd(-1, &set_, SFD_CLOEXEC | SFD_NONBLOCK));
    passedOn_ = FileDescriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    over_ = FileDescriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!signals_ || !passedOn_ || !over_) {
        debugLog("[TerminationSignals] No files to wait with: signals end the program at once");
        pthread_sigmask(SIG_UNBLOCK, &set_, nullptr);
        return;
    }
    thread_ = std::thread([this] { watch(); });
}

TerminationSignals::~TerminationSignals() {
    if (thread_.joinable()) {
        ::eventfd_write(over_.get(), 1);
        thread_.join();
    }
}

void TerminationSignals::startReporting(std::function<void()> received) {
    if (!thread_.joinable()) {
        return;
    }
    notifier_ = std::make_unique<QSocketNotifier>(passedOn_.get(), QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(),
                     [file = passedOn_.get(), received = std::move(received)] {
                         eventfd_t count = 0;
                         if (::eventfd_read(file, &count) == 0) {
                             received();
                         }
                     });
}

void TerminationSignals::watch() const {
    std::array<pollfd, 2> files{{{signals_.get(), POLLIN, 0}, {over_.get(), POLLIN, 0}}};
    while (true) {
        ::poll(files.data(), files.size(), -1);
        if (files[1].revents != 0) {
            return;
        }
        signalfd_siginfo signal{};
        if (::read(signals_.get(), &signal, sizeof signal) == sizeof signal) {
            ::eventfd_write(passedOn_.get(), 1);
            return seeToTheEnd();
        }
    }
}

void TerminationSignals::seeToTheEnd() const {
    if (isReadable(over_.get(), takingLimit)) {
        return;
    }
    const bool isTaken = !isReadable(passedOn_.get(), 0s);
    if (isTaken && isReadable(over_.get(), endLimit)) {
        return;
    }
    debugLog("[TerminationSignals] The desktop does not answer: ending without it");
    cutConnections();
    if (!isReadable(over_.get(), endLimitOnceCut)) {
        debugLog("[TerminationSignals] The program did not end in time");
        std::_Exit(EXIT_FAILURE);
    }
}

} // namespace fernhollow
