#include "Platform/Desktop.h"

#include "Platform/StatusItem/StatusItem.h"
#include "Platform/Wayland/WaylandEventTapProvider.h"
#include "Platform/Workspace.h"
#include "Platform/X11/X11Desktop.h"

#include <QByteArray>

#include <utility>

namespace fernhollow {

bool Desktop::isReachable() {
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    if (!platform.isEmpty() && !platform.startsWith("xcb")) {
        return true; // the person has chosen a platform of the toolkit
    }
    return (platform.isEmpty() && !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) || isX11DisplayReachable();
}

std::unique_ptr<EventTapProvider> Desktop::makeEventTapProvider(EventTapProvider::Prompt prompt) const {
    switch (session_) {
    case Session::kwin:
    case Session::gnome:
    case Session::wlroots:
        return std::make_unique<WaylandEventTapProvider>(std::move(prompt));
    case Session::none: // the X11 provider reports that there is no display
    case Session::x11:
        break;
    }
    return makeX11EventTapProvider(std::move(prompt));
}

std::unique_ptr<Workspace> Desktop::makeWorkspace() const {
    switch (session_) {
    case Session::none:
    case Session::kwin:
    case Session::gnome:
    case Session::wlroots:
        return std::make_unique<UnknownWorkspace>();
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
