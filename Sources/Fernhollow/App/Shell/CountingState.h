#pragma once

#include "Platform/EventTap.h"
#include "Support/Observable.h"

#include <optional>

namespace fernhollow {

/// Whether the desktop lets us count, for whatever shows it. The keyboard monitor and the desktop's prompt
/// set it, on the main thread. It lives as long as the program.
class CountingState : public Observable {
public:
    /// True from the moment when it is known that presses cannot be counted until they can.
    Published<bool> isRefused{*this};

    /// Why, where the desktop has said it.
    const std::optional<TrustProblem>& problem() const { return problem_; }

    void setProblem(TrustProblem problem) {
        problem_ = std::move(problem);
        isRefused.set(true);
    }

    /// The monitor could not start. It tries again each second, and desktops that have to ask another process
    /// say no until they know: a few times are no refusal yet.
    void startFailed() {
        constexpr int patience = 5;
        if (++failures_ >= patience) {
            isRefused.set(true);
        }
    }

    void started() {
        failures_ = 0;
        problem_.reset();
        isRefused.set(false);
    }

private:
    std::optional<TrustProblem> problem_;
    int failures_ = 0; // since the last start
};

} // namespace fernhollow
