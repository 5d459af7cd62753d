#pragma once

#include "Platform/EventTap.h"
#include "Platform/X11/XcbHandles.h"

#include <QDeadlineTimer>

#include <optional>

namespace fernhollow {

/// Says whether this display lets us see every press, and makes its taps.
///
/// It may be asked each second for years. So it keeps the connection with which it answers, hands
/// this to the next tap, and pauses between attempts to reach a display that does not answer. Main
/// thread only.
class X11EventTapProvider final : public EventTapProvider {
public:
    explicit X11EventTapProvider(Prompt prompt);

    bool isProcessTrusted(bool prompting) override;
    std::unique_ptr<EventTap> createTap(Callback callback) override;

private:
    enum class Refusal {
        noDisplay,   ///< the display cannot be reached
        noRecording, ///< the display has no RECORD extension
    };

    std::optional<Refusal> refusal();
    bool connected();
    void logChange(std::optional<Refusal> now);
    static TrustProblem describe(Refusal refusal);

    Prompt prompt_;
    XcbConnection connection_;
    QDeadlineTimer nextAttempt_;
    std::optional<Refusal> logged_;
    bool tapFailureLogged_ = false;
};

} // namespace fernhollow
