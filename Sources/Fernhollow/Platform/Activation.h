#pragma once

#include <QByteArray>

class QWidget;

namespace fernhollow {

/// The desktop's leave to come to the front, which a launcher, a status bar or a notification hands on with
/// what the person did there: the id of a startup notification on X11, a token of xdg-activation on Wayland.
/// Empty where the desktop gave none; it lets windows come to the front without, or only marks them.
using ActivationToken = QByteArray;

/// The one that this process was started with.
ActivationToken launchActivationToken();

/// Shows the window in front, with the keyboard where the desktop permits that.
void bringToFront(QWidget& window, const ActivationToken& token = {});

} // namespace fernhollow
