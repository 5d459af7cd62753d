#pragma once

#include <QImage>
#include <QPainterPath>
#include <QRectF>
#include <QSize>
#include <QString>

namespace fernhollow {

/// A short text as a picture of any size: light bold digits on a dark rounded plate that fills the
/// size, so that it reads on light and on dark panels. The text is drawn as large as the plate allows.
class CountIcon {
public:
    /// With `isHalted` the digits have the colour of something that waits.
    explicit CountIcon(const QString& text, bool isHalted = false);

    QImage draw(QSize plate) const;
    QImage drawSquare(int side) const { return draw({side, side}); }

    /// The size of `height` in which the text is not squeezed; at least a square.
    QSize wideSize(int height) const;

private:
    QPainterPath fitted(QSize plate) const;

    bool isHalted_;
    QPainterPath outline_;
    QRectF digits_; // ink of the digits alone: letters may reach beyond
};

} // namespace fernhollow
