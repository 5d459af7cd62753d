#pragma once

#include "KeypressCore/DayKey.h"
#include "Model/Sync/BackendRequests.h"
#include "Support/Clock.h"
#include "Support/HttpSession.h"

#include <chrono>
#include <optional>
#include <stop_token>
#include <string>
#include <utility>

namespace fernhollow {

/// What the requests of one cycle, or of one portion of the past, have in common, and how they fare.
///
/// Shared by the coroutines of the cycle, on the engine's executor.
class SyncSession {
public:
    SyncSession(std::string address, BackendRequests backendRequests, DayKey today, Moment now,
                std::stop_token stopToken)
        : email(std::move(address)), requests(std::move(backendRequests)), day(std::move(today)), begun(now),
          stop(std::move(stopToken)) {}

    const std::string email;
    const BackendRequests requests;
    const DayKey day; ///< today, when the session began
    const Moment begun;
    const std::stop_token stop;

    /// Requests may be made.
    bool mayAsk() const { return !isOver_ && !stop.stop_requested(); }
    /// Counts may be sent.
    bool mayWrite() const { return mayAsk() && !isLost_; }

    void noteAnswer(const HttpAnswer& answer, Instant now);
    void noteNoAnswer() { isReachable_ = false; }
    void noteTaken() { hasTaken_ = true; }

    /// Something could not be sent. Nothing is sent after it.
    void lose() { isLost_ = true; }
    /// No request is made any more.
    void end() { isOver_ = true; }

    /// The backend took counts.
    bool hasTaken() const { return hasTaken_; }
    bool isLost() const { return isLost_; }
    /// The last request had an answer.
    bool isReachable() const { return isReachable_; }
    /// How long the backend is to be left alone at least; absent unless it, or the store, had trouble. While
    /// the network is gone there is nothing to be left alone.
    std::optional<std::chrono::seconds> wantedPause() const;

private:
    bool isReachable_ = true;
    bool hasTaken_ = false;
    bool isLost_ = false;
    bool isOver_ = false;
    std::optional<std::chrono::seconds> wantedPause_;
};

} // namespace fernhollow
