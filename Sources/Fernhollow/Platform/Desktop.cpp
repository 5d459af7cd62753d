#include "Platform/Desktop.h"

#include "Platform/Applications/ApplicationFolders.h"
#include "Platform/Applications/MessageLocale.h"
#include "Platform/StatusItem/StatusItem.h"
#include "Platform/Wayland/KWinWorkspace.h"
#include "Platform/Wayland/KeytapConnection.h"
#include "Platform/Wayland/WaylandEventTapProvider.h"
#include "Platform/Wayland/WaylandWorkspace.h"
#include "Platform/Workspace.h"
#include "Platform/X11/X11Desktop.h"

#include <QByteArray>

#include <utility>

namespace fernhollow {

Desktop::Desktop(Session session) : session_(session) {
    if (session != Session::none && session != Session::x11) {
        keytap_ = std::make_shared<KeytapConnection>();
    }
}

bool Desktop::isReachable() {
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    if (!platform.isEmpty() && !platform.startsWith("xcb")) {
        return true; // the person has chosen one of Qt's platforms
    }
    return (platform.isEmpty() && !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) || isX11DisplayReachable();
}

std::unique_ptr<EventTapProvider> Desktop::makeEventTapProvider(EventTapProvider::Prompt prompt) const {
    if (keytap_) {
        return std::make_unique<WaylandEventTapProvider>(std::move(prompt), keytap_);
    }
    return makeX11EventTapProvider(std::move(prompt)); // reports it where there is no display
}

std::unique_ptr<Workspace> Desktop::makeWorkspace() const {
    switch (session_) {
    case Session::none:
        return std::make_unique<UnknownWorkspace>();
    case Session::kwin:
        return std::make_unique<KWinWorkspace>(DesktopEntries(applicationFolders(), messageLocale()),
                                               keytap_);
    case Session::gnome:
    case Session::wlroots:
        return std::make_unique<WaylandWorkspace>(DesktopEntries(applicationFolders(), messageLocale()),
                                                  keytap_);
    case Session::x11:
        break;
    }
    return makeX11Workspace();
}

std::unique_ptr<StatusItem> Desktop::makeStatusItem() const {
    return std::make_unique<StatusItem>(panelsKeepIconsSquare() ? StatusIcons::square : StatusIcons::wide,
                                        windowSystem() == WindowSystem::x11 ? makeXEmbedTray() : nullptr);
}

} // namespace fernhollow
