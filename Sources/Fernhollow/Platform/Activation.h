#pragma once

#include <QByteArray>

class QWidget;

namespace fernhollow {

/// The desktop's permission to come to the front, which a launcher, a status bar or a notification hands on:
/// the id of a startup notification on X11, a token of xdg-activation on Wayland. Empty when the desktop
/// gave none; it then lets a window come to the front without one, or only marks the window.
using ActivationToken = QByteArray;

/// The token that this process was started with.
ActivationToken launchActivationToken();

/// Shows the window in front, and gives it the keyboard where the desktop permits that.
void bringToFront(QWidget& window, const ActivationToken& token = {});

} // namespace fernhollow
