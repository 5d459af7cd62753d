#include "Platform/X11/X11EventTapProvider.h"

#include "Platform/X11/RecordTap.h"
#include "Support/DebugLog.h"

#include <QElapsedTimer>
#include <xcb/record.h>

#include <algorithm>
#include <chrono>
#include <utility>

namespace fernhollow {
namespace {

// Often enough for a person who waits for the display to come back, and rare enough to cost nothing.
constexpr std::chrono::milliseconds attemptPause{2'000};
// A display behind a slow network may take long to refuse. Pauses of this many times the attempt keep the
// main thread free.
constexpr int pausePerAttempt = 50;

} // namespace

X11EventTapProvider::X11EventTapProvider(Prompt prompt) : prompt_(std::move(prompt)) {}

bool X11EventTapProvider::isProcessTrusted(bool prompting) {
    const auto reason = refusal();
    logChange(reason);
    if (reason && prompting && prompt_) {
        prompt_(describe(*reason));
    }
    return !reason;
}

std::unique_ptr<EventTap> X11EventTapProvider::createTap(Callback callback) {
    if (refusal()) {
        return nullptr;
    }
    auto tap = RecordTap::create(std::move(connection_), std::move(callback));
    if (!tap && !tapFailureLogged_) {
        debugLog("[EventTap] The X server refused to record key presses");
    }
    tapFailureLogged_ = !tap;
    return tap;
}

std::optional<X11EventTapProvider::Refusal> X11EventTapProvider::refusal() {
    if (!connected()) {
        return Refusal::noDisplay;
    }
    const xcb_query_extension_reply_t* record = xcb_get_extension_data(connection_.get(), &xcb_record_id);
    if (xcb_connection_has_error(connection_.get()) != 0) {
        return Refusal::noDisplay;
    }
    return record != nullptr && record->present != 0 ? std::nullopt : std::optional(Refusal::noRecording);
}

bool X11EventTapProvider::connected() {
    if (connection_ && !dropArrivedEvents(connection_.get())) {
        connection_.reset();
    }
    if (connection_ || !nextAttempt_.hasExpired()) {
        return connection_ != nullptr;
    }
    QElapsedTimer attempt;
    attempt.start();
    connection_ = connectToDisplay();
    if (!connection_) {
        nextAttempt_.setRemainingTime(
            std::max(attemptPause, std::chrono::milliseconds(attempt.elapsed()) * pausePerAttempt));
    }
    return connection_ != nullptr;
}

void X11EventTapProvider::logChange(std::optional<Refusal> now) {
    if (now && now != logged_) {
        debugLog("[EventTap] " + describe(*now).missing);
    }
    logged_ = now;
}

TrustProblem X11EventTapProvider::describe(Refusal refusal) {
    switch (refusal) {
    case Refusal::noDisplay:
        return {"Fernhollow cannot reach an X11 display.",
                "Start it from within your desktop session. It begins to count as soon as the display "
                "answers."};
    case Refusal::noRecording:
        return {"The X server does not offer the RECORD extension, which tells when a key is pressed.",
                "Enable the RECORD extension in the configuration of the X server and log in again."};
    }
    return {};
}

} // namespace fernhollow
