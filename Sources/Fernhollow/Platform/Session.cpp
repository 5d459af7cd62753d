#include "Platform/Session.h"

#include <QByteArray>
#include <QGuiApplication>
#include <QList>
#include <QString>

#include <algorithm>
#include <initializer_list>

namespace fernhollow {
namespace {

/// Whether XDG_CURRENT_DESKTOP contains one of `names`. The variable lists the desktop's own name and then
/// those of the desktops that it is derived from.
bool isDesktop(std::initializer_list<const char*> names) {
    const auto current = qgetenv("XDG_CURRENT_DESKTOP").split(':');
    return std::ranges::any_of(names, [&](const char* name) { return current.contains(name); });
}

} // namespace

Session currentSession() {
    if (qgetenv("XDG_SESSION_TYPE") != "wayland" && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) {
        return qEnvironmentVariableIsEmpty("DISPLAY") ? Session::none : Session::x11;
    }
    if (isDesktop({"KDE"})) {
        return Session::kwin;
    }
    return isDesktop({"GNOME"}) ? Session::gnome : Session::wlroots;
}

WindowSystem windowSystem() {
    const QString platform = QGuiApplication::platformName();
    if (platform == QLatin1StringView("xcb")) {
        return WindowSystem::x11;
    }
    return platform.startsWith(QLatin1StringView("wayland")) ? WindowSystem::wayland : WindowSystem::other;
}

bool panelsKeepIconsSquare() {
    return windowSystem() != WindowSystem::wayland || isDesktop({"XFCE", "KDE", "LXQt"});
}

} // namespace fernhollow
