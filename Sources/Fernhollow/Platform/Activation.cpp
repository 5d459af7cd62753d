#include "Platform/Activation.h"

#include "Platform/Session.h"
#include "Platform/X11/X11Desktop.h"

#include <QWidget>

namespace fernhollow {
namespace {

constexpr const char* waylandVariable = "XDG_ACTIVATION_TOKEN";
constexpr const char* x11Variable = "DESKTOP_STARTUP_ID";

} // namespace

ActivationToken launchActivationToken() {
    const QByteArray token = qgetenv(waylandVariable);
    return token.isEmpty() ? qgetenv(x11Variable) : token;
}

void bringToFront(QWidget& window, const ActivationToken& token) {
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    window.show();
    window.raise();
    if (!token.isEmpty() && windowSystem() == WindowSystem::x11 &&
        activateX11Window(static_cast<std::uint32_t>(window.winId()), token.toStdString())) {
        return; // this used the time of the person's click; Qt knows only the time of its own last event
    }
    if (!token.isEmpty() && windowSystem() == WindowSystem::wayland) {
        qputenv(waylandVariable, token); // Qt takes it from there when it activates the window
    }
    window.activateWindow();
}

} // namespace fernhollow
