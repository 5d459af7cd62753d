#pragma once

namespace fernhollow {

/// The kind of session that the person logged into. It decides how the program learns of key presses and of
/// the application in front.
enum class Session {
    none,    ///< the environment names no display
    x11,     ///< an X server, which reports every press and window
    kwin,    ///< the Wayland session of KDE Plasma
    gnome,   ///< the Wayland session of GNOME
    wlroots, ///< any other Wayland session: most compositors are built on wlroots or speak its protocols
};

/// The session that the environment names.
Session currentSession();

/// The system that shows this program's own windows. In a Wayland session that may be an X server, too.
enum class WindowSystem { x11, wayland, other };

/// The window system that Qt uses. Main thread only, once there is an application object.
WindowSystem windowSystem();

/// Whether the desktop's panels draw every icon square; some squeeze the largest icon on offer to make it so.
bool panelsKeepIconsSquare();

} // namespace fernhollow
