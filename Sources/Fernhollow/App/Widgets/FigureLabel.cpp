#include "App/Widgets/FigureLabel.h"

#include "App/Widgets/Theme.h"

#include <QEvent>

namespace fernhollow {

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
    setFixedSize(std::max(width, metrics.horizontalAdvance(text())) + 1, metrics.height());
}

} // namespace fernhollow
