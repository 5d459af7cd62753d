#pragma once

class QSize;
class QWidget;

namespace fernhollow {

/// Gives a window its size, smaller where the screen is, in the middle of the screen.
void placeCentred(QWidget& window, const QSize& initial, const QSize& minimum);

} // namespace fernhollow
