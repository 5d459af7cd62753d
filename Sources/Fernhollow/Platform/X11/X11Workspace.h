#pragma once

#include "Platform/Applications/DesktopEntries.h"
#include "Platform/Workspace.h"
#include "Platform/X11/WindowProperties.h"
#include "Platform/X11/XcbHandles.h"

#include <QDeadlineTimer>
#include <QTimer>

#include <cstdint>
#include <optional>

namespace fernhollow {

/// The frontmost application of an X11 display, as its window manager announces the active window.
///
/// The server sends an event for each change, and these are read when the application is asked for. So
/// while a window stays in front, an answer needs no request. The display is connected at the first
/// question. Used on the main thread, owned by FernhollowApp.
class X11Workspace final : public Workspace {
public:
    explicit X11Workspace(DesktopEntries entries);

    std::optional<FrontmostApplication> frontmostApplication() override;

private:
    bool connected();
    void connect();
    void lose();
    void takeEvents();
    void take(const xcb_generic_event_t& event);
    void followActiveWindow();
    void listenTo(xcb_window_t window, std::uint32_t events);

    DesktopEntries entries_;
    XcbConnection connection_;
    QDeadlineTimer nextAttempt_;
    QTimer reader_; ///< reads events now and then, so that none pile up while no key is pressed
    WindowAtoms atoms_;
    xcb_window_t root_ = XCB_WINDOW_NONE;
    xcb_window_t active_ = XCB_WINDOW_NONE;
    bool activeIsCurrent_ = false;
    bool applicationIsCurrent_ = false;
    std::optional<FrontmostApplication> application_; ///< of `active_`
    bool lossLogged_ = false;
    bool silenceLogged_ = false; ///< it was logged that the window manager announces no active window
};

} // namespace fernhollow
