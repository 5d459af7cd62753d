#pragma once

namespace fernhollow {

/// The kind of session that the person logged into. It decides where key presses and the application in front
/// can be learnt.
enum class Session {
    none,    ///< the environment names no display
    x11,     ///< an X server shows everything
    kwin,    ///< the Wayland session of KDE Plasma
    gnome,   ///< the Wayland session of GNOME
    wlroots, ///< any other Wayland session: most compositors are built on wlroots or speak its protocols
};

/// What the environment names. Nothing else in the program looks into it for this.
Session currentSession();

/// What shows this program's own windows. In a Wayland session that may be an X server, too.
enum class WindowSystem { x11, wayland, other };

/// Of the running toolkit; for the main thread, once there is an application object.
WindowSystem windowSystem();

/// Whether the desktop's panels keep every icon square, some of them by squeezing the largest on offer.
bool panelsKeepIconsSquare();

} // namespace fernhollow
