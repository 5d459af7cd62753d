#include "App/TerminationSignals.h"

#include "Support/DebugLog.h"

#include <QSocketNotifier>

#include <csignal>
#include <pthread.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace fernhollow {
namespace {

sigset_t terminationSignals() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGTERM);
    sigaddset(&set, SIGINT);
    sigaddset(&set, SIGHUP);
    return set;
}

} // namespace

void TerminationSignals::block() {
    const sigset_t set = terminationSignals();
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

TerminationSignals::TerminationSignals(QObject* parent) : QObject(parent) {
    const sigset_t set = terminationSignals();
    file_ = ::signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
    if (file_ < 0) {
        debugLog("[TerminationSignals] No signalfd: signals end the program at once");
        pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
        return;
    }
    auto* notifier = new QSocketNotifier(file_, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this] {
        signalfd_siginfo signal{};
        if (::read(file_, &signal, sizeof signal) == sizeof signal) {
            Q_EMIT received();
        }
    });
}

TerminationSignals::~TerminationSignals() {
    if (file_ >= 0) {
        ::close(file_);
    }
}

} // namespace fernhollow
