#include "Platform/StatusItem/CountIcon.h"

#include <QFont>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace fernhollow {
namespace {

constexpr QRgb plateColor = 0xff2b303b;
constexpr QRgb textColor = 0xffffffff;
constexpr QRgb haltedColor = 0xffff9f0a;
constexpr qreal cornerOfPlate = 0.18;

// Outlines are taken at this size and scaled, so that a digit can end exactly on a row of pixels.
constexpr int outlinePixels = 100;

// The unit is there to be recognised, the digits to be read.
constexpr int unitPixels = 80;

constexpr qreal digitsOfPlate = 0.64; // their height, where the width allows it

// Digits are drawn down to this much narrower than the font has them before they get lower instead.
constexpr qreal narrowest = 0.6;

QString toText(uint character) {
    return QStringView(QChar::fromUcs4(character)).toString();
}

bool isDigit(uint character) {
    return QChar::category(character) == QChar::Number_DecimalDigit;
}

QFont boldFont(int pixels) {
    QFont font = QGuiApplication::font();
    font.setPixelSize(pixels);
    font.setBold(true);
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

// Every digit gets the cell of its script's widest, so that a growing number does not tremble with
// fonts whose digits differ in width.
qreal digitCell(const QFontMetricsF& metrics, uint digit) {
    const uint zero = digit - static_cast<uint>(QChar::digitValue(digit));
    qreal cell = 0;
    for (uint each = zero; each < zero + 10; ++each) {
        cell = std::max(cell, metrics.horizontalAdvance(toText(each)));
    }
    return cell;
}

int marginOf(QSize plate) {
    return std::max(1, plate.height() / 16);
}

// A height that leaves the same whole number of pixels above and below.
int digitHeightNear(qreal wanted, int plateHeight) {
    const int height = static_cast<int>(std::lround(wanted));
    return (plateHeight - height) % 2 == 0 ? height : height + (wanted > height ? 1 : -1);
}

} // namespace

CountIcon::CountIcon(const QString& text, bool isHalted) : isHalted_(isHalted) {
    const QFont font = boldFont(outlinePixels);
    const QFont unitFont = boldFont(unitPixels);
    const QFontMetricsF metrics(font);
    qreal x = 0;
    qreal cell = 0;
    for (const uint character : text.toUcs4()) {
        const QString glyph = toText(character);
        QPainterPath ink;
        if (isDigit(character)) {
            cell = cell > 0 ? cell : digitCell(metrics, character);
            ink.addText(QPointF(x + (cell - metrics.horizontalAdvance(glyph)) / 2, 0), font, glyph);
            digits_ |= ink.boundingRect();
            x += cell;
        } else {
            const bool unit = QChar::isLetter(character) && !digits_.isEmpty();
            const QFont& own = unit ? unitFont : font;
            ink.addText(QPointF(x, 0), own, glyph);
            x += QFontMetricsF(own).horizontalAdvance(glyph);
        }
        outline_.addPath(ink);
    }
    if (digits_.isEmpty()) {
        digits_ = outline_.boundingRect();
    }
}

QPainterPath CountIcon::fitted(QSize plate) const {
    const QRectF ink = outline_.boundingRect();
    const qreal room = plate.width() - 2 * marginOf(plate);
    const qreal wanted = digitsOfPlate * plate.height() / digits_.height();
    const qreal possible = std::min(wanted, room / (ink.width() * narrowest));
    const qreal scale = digitHeightNear(possible * digits_.height(), plate.height()) / digits_.height();
    const qreal squeeze = std::min(1.0, room / (ink.width() * scale));

    const QTransform place = QTransform::fromTranslate(-ink.center().x(), -digits_.center().y()) *
                             QTransform::fromScale(scale * squeeze, scale) *
                             QTransform::fromTranslate(plate.width() / 2.0, plate.height() / 2.0);
    return place.map(outline_);
}

QImage CountIcon::draw(QSize plate) const {
    QImage image(plate, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor::fromRgba(plateColor));
    const qreal radius = cornerOfPlate * plate.height();
    painter.drawRoundedRect(QRectF(QPointF(), QSizeF(plate)), radius, radius);
    if (!outline_.isEmpty()) {
        painter.fillPath(fitted(plate), QColor::fromRgba(isHalted_ ? haltedColor : textColor));
    }
    return image;
}

QSize CountIcon::wideSize(int height) const {
    if (outline_.isEmpty()) {
        return {height, height};
    }
    const qreal scale = digitsOfPlate * height / digits_.height();
    const qreal ink = scale * outline_.boundingRect().width();
    const int padding = 4 * marginOf({height, height});
    return {std::max(height, static_cast<int>(std::ceil(ink)) + 2 * padding), height};
}

} // namespace fernhollow
