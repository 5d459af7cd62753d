#include "App/Widgets/FigureLabel.h"

#include "App/Widgets/Theme.h"

#include <QEvent>
#include <QPainter>
#include <QStyle>

#include <algorithm>

namespace fernhollow {
namespace {

constexpr int gap = 1; // above and below the digits

/// The text and every digit of its script, which it may show next.
QString withAllDigits(const QString& text) {
    const auto digit = std::ranges::find_if(text, [](QChar character) { return character.isDigit(); });
    QString all = text;
    if (digit != text.end()) {
        const auto zero = static_cast<char16_t>(digit->unicode() - digit->digitValue());
        for (char16_t value = 0; value < 10; ++value) {
            all += QChar(static_cast<char16_t>(zero + value));
        }
    }
    return all;
}

} // namespace

FigureLabel::FigureLabel(const QFont& font, const QColor& color, Qt::Alignment alignment, QWidget* parent)
    : QLabel(parent) {
    setTextFormat(Qt::PlainText);
    setFont(font);
    setAlignment(alignment | Qt::AlignVCenter);
    Theme::setTextColor(*this, color);
}

void FigureLabel::setFigure(const QString& newText) {
    if (newText == text()) {
        return;
    }
    const bool hasLength = newText.size() == text().size();
    setText(newText);
    if (!hasLength) {
        reserveRoom();
    }
}

void FigureLabel::changeEvent(QEvent* event) {
    QLabel::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        reserveRoom();
    }
}

// With a fixed size Qt does not lay out again after each new text.
void FigureLabel::reserveRoom() {
    const QFontMetrics metrics(font());
    int widestDigit = 0;
    for (const QChar digit : text()) {
        widestDigit = digit.isDigit() ? std::max(widestDigit, metrics.horizontalAdvance(digit)) : widestDigit;
    }
    int width = 0;
    for (const QChar character : text()) {
        width += character.isDigit() ? widestDigit : metrics.horizontalAdvance(character);
    }
    const QRect ink = metrics.tightBoundingRect(withAllDigits(text()));
    const int above = std::max(-ink.top(), metrics.capHeight());
    baseline_ = gap + above;
    setFixedSize(std::max(width, metrics.horizontalAdvance(text())) + 1,
                 baseline_ + std::max(ink.bottom() + 1, 0) + gap);
}

void FigureLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setPen(palette().color(foregroundRole()));
    const auto side = QStyle::visualAlignment(layoutDirection(), alignment());
    const int spare = width() - fontMetrics().horizontalAdvance(text());
    const int x = side.testFlag(Qt::AlignRight) ? spare : (side.testFlag(Qt::AlignHCenter) ? spare / 2 : 0);
    painter.drawText(x, baseline_, text());
}

} // namespace fernhollow
