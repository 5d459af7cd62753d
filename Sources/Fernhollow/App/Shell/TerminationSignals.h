#pragma once

#include "Support/FileDescriptor.h"

#include <QSocketNotifier>

#include <csignal>
#include <functional>
#include <memory>
#include <thread>

namespace fernhollow {

/// Turns SIGTERM, SIGINT and SIGHUP into an orderly end, also while the main thread waits for a display or a
/// session bus that no longer answers.
///
/// A thread of this object takes the signals and passes each on to the main thread. Where that has not taken
/// it in time, the thread cuts the connections by which the main thread waits, so that the program ends as it
/// does when the display goes away: the main thread writes what is left and leaves. A program that has not
/// ended even so is ended without more ado. The two threads share nothing but kernel objects. Created first
/// in launch(), before any other thread exists; lives as long as the program.
class TerminationSignals {
public:
    TerminationSignals();
    ~TerminationSignals();
    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;

    /// From now on `received` is called on this thread, from its event loop, for each signal and for those
    /// that came before. Main thread, once there is an application object; until stopReporting().
    void startReporting(std::function<void()> received);
    void stopReporting() { notifier_.reset(); }

private:
    void watch() const;
    void seeToTheEnd() const;

    sigset_t set_{};
    FileDescriptor signals_;  ///< a signalfd
    FileDescriptor passedOn_; ///< an eventfd: readable while the main thread has not taken a signal
    FileDescriptor over_;     ///< an eventfd: readable once this object ends
    std::unique_ptr<QSocketNotifier> notifier_;
    std::thread thread_;
};

} // namespace fernhollow
