#include "Platform/X11/X11Desktop.h"

#include "Platform/Applications/ApplicationFolders.h"
#include "Platform/Applications/MessageLocale.h"
#include "Platform/X11/StartupNotification.h"
#include "Platform/X11/X11EventTapProvider.h"
#include "Platform/X11/X11Workspace.h"
#include "Platform/X11/XEmbedTray.h"

#include <QGuiApplication>

#include <utility>

namespace fernhollow {

bool isX11DisplayReachable() {
    return connectToDisplay() != nullptr;
}

std::unique_ptr<EventTapProvider> makeX11EventTapProvider(EventTapProvider::Prompt prompt) {
    return std::make_unique<X11EventTapProvider>(std::move(prompt));
}

std::unique_ptr<Workspace> makeX11Workspace() {
    return std::make_unique<X11Workspace>(DesktopEntries(applicationFolders(), messageLocale()));
}

bool activateX11Window(std::uint32_t window, std::string_view startupId) {
    xcb_connection_t* const connection =
        qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
    const xcb_window_t root = rootWindow(connection);
    announceStarted(connection, root, window, startupId);
    const auto time = startupTime(startupId);
    if (time) {
        requestActivation(connection, root, window, *time);
    }
    return time.has_value();
}

std::unique_ptr<Tray> makeXEmbedTray() {
    return std::make_unique<XEmbedTray>();
}

} // namespace fernhollow
