#include "App/Widgets/WindowController.h"

#include <QIcon>
#include <QScreen>

namespace fernhollow {
namespace {

constexpr int titleBarHeight = 40; // about what a window manager adds; on a low screen it must stay in reach

} // namespace

void WindowController::setWindow(QWidget* window, const Frame& frame) {
    window_ = window;
    window->setWindowTitle(frame.title);
    window->setWindowIcon(QIcon(QStringLiteral(":/fernhollow.svg")));
    window->setMinimumSize(frame.minimum);
    const QRect available = window->screen()->availableGeometry().adjusted(0, titleBarHeight, 0, 0);
    QRect place({}, frame.initial.boundedTo(available.size()).expandedTo(frame.minimum));
    place.moveCenter(available.center());
    window->setGeometry(place);
}

} // namespace fernhollow
