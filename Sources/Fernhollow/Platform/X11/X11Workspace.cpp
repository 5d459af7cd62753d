#include "Platform/X11/X11Workspace.h"

#include "Platform/Applications/ApplicationResolver.h"
#include "Support/DebugLog.h"

#include <QElapsedTimer>

#include <algorithm>
#include <chrono>
#include <utility>

namespace fernhollow {
namespace {

// A busy window changes its title some ten times a second, which makes a few hundred small events in this
// time.
constexpr std::chrono::seconds readingInterval{20};
constexpr std::chrono::milliseconds attemptPause{3'000};
constexpr int pausePerAttempt = 50; // times the attempt, so that a slow network does not hold us up

} // namespace

X11Workspace::X11Workspace(DesktopEntries entries) : entries_(std::move(entries)) {
    reader_.setTimerType(Qt::VeryCoarseTimer);
    reader_.setInterval(readingInterval);
    QObject::connect(&reader_, &QTimer::timeout, &reader_, [this] { takeEvents(); });
}

std::optional<FrontmostApplication> X11Workspace::frontmostApplication() {
    if (!connected()) {
        return std::nullopt;
    }
    takeEvents();
    followActiveWindow();
    if (connection_ && !applicationIsCurrent_) {
        application_ =
            active_ == XCB_WINDOW_NONE
                ? std::nullopt
                : resolveApplication(readWindowFacts(connection_.get(), active_, atoms_), entries_);
        applicationIsCurrent_ = true;
    }
    return connection_ ? application_ : std::nullopt;
}

bool X11Workspace::connected() {
    if (!connection_ && nextAttempt_.hasExpired()) {
        QElapsedTimer attempt;
        attempt.start();
        connect();
        if (!connection_) {
            nextAttempt_.setRemainingTime(
                std::max(attemptPause, std::chrono::milliseconds(attempt.elapsed()) * pausePerAttempt));
        }
    }
    return connection_ != nullptr;
}

void X11Workspace::connect() {
    connection_ = connectToDisplay();
    if (!connection_) {
        lose();
        return;
    }
    root_ = rootWindow(connection_.get());
    atoms_ = WindowAtoms::read(connection_.get());
    listenTo(root_, XCB_EVENT_MASK_PROPERTY_CHANGE);
    lossLogged_ = false;
    reader_.start();
}

void X11Workspace::lose() {
    connection_.reset();
    reader_.stop();
    nextAttempt_.setRemainingTime(attemptPause);
    active_ = XCB_WINDOW_NONE;
    activeIsCurrent_ = false;
    applicationIsCurrent_ = false;
    application_.reset();
    if (!std::exchange(lossLogged_, true)) {
        debugLog("[Workspace] The X11 display does not answer; applications are unknown until it does");
    }
}

void X11Workspace::takeEvents() {
    if (!connection_) {
        return;
    }
    while (const auto event = XcbReply<xcb_generic_event_t>(xcb_poll_for_event(connection_.get()))) {
        take(*event);
    }
    if (xcb_connection_has_error(connection_.get()) != 0) {
        lose();
    }
}

void X11Workspace::take(const xcb_generic_event_t& event) {
    const int type = event.response_type & 0x7f;
    if (type == XCB_PROPERTY_NOTIFY) {
        const auto& change = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        if (change.window == root_) {
            activeIsCurrent_ = activeIsCurrent_ && change.atom != atoms_[WindowAtoms::activeWindow];
        } else if (change.window == active_) {
            applicationIsCurrent_ = applicationIsCurrent_ && !atoms_.identifiesApplication(change.atom);
        }
    } else if (type == XCB_DESTROY_NOTIFY) {
        // Another program's window may get the same number.
        const auto& destroyed = reinterpret_cast<const xcb_destroy_notify_event_t&>(event);
        if (destroyed.window == active_) {
            active_ = XCB_WINDOW_NONE;
            activeIsCurrent_ = false;
            applicationIsCurrent_ = false;
        }
    }
}

void X11Workspace::followActiveWindow() {
    if (!connection_ || activeIsCurrent_) {
        return;
    }
    ActiveWindow now = readActiveWindow(connection_.get(), root_, atoms_);
    if (xcb_connection_has_error(connection_.get()) != 0) {
        lose();
        return;
    }
    activeIsCurrent_ = true;
    if (now.window == root_) {
        now.window = XCB_WINDOW_NONE; // the root window belongs to no application
    }
    if (!now.announced && !std::exchange(silenceLogged_, true)) {
        debugLog(
            "[Workspace] The window manager does not announce the active window; applications are unknown");
    }
    if (now.window == active_) {
        return;
    }
    listenTo(active_, XCB_EVENT_MASK_NO_EVENT);
    active_ = now.window;
    applicationIsCurrent_ = false;
    // This comes before its properties are read, so that none changes unnoticed in between.
    listenTo(active_, XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY);
}

void X11Workspace::listenTo(xcb_window_t window, std::uint32_t events) {
    if (window != XCB_WINDOW_NONE) {
        xcb_change_window_attributes(connection_.get(), window, XCB_CW_EVENT_MASK, &events);
    }
}

} // namespace fernhollow
