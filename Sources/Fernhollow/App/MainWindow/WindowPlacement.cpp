#include "App/MainWindow/WindowPlacement.h"

#include <QScreen>
#include <QWidget>

namespace fernhollow {
namespace {

constexpr int titleBarHeight = 40; // about what a window manager adds; on a low screen it must stay in reach

} // namespace

void placeCentred(QWidget& window, const QSize& initial, const QSize& minimum) {
    window.setMinimumSize(minimum);
    const QRect available = window.screen()->availableGeometry().adjusted(0, titleBarHeight, 0, 0);
    QRect frame({}, initial.boundedTo(available.size()).expandedTo(minimum));
    frame.moveCenter(available.center());
    window.setGeometry(frame);
}

} // namespace fernhollow
