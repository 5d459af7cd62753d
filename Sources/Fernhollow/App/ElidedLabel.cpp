#include "App/ElidedLabel.h"

#include <QEvent>

namespace fernhollow {

ElidedLabel::ElidedLabel(QWidget* parent) : QLabel(parent) {
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Preferred);
}

void ElidedLabel::setFullText(const QString& text) {
    if (text == fullText_) {
        return;
    }
    fullText_ = text;
    setAccessibleName(text);
    updateGeometry();
    elide();
}

QSize ElidedLabel::sizeHint() const {
    return {fontMetrics().horizontalAdvance(fullText_) + 1, fontMetrics().height()};
}

QSize ElidedLabel::minimumSizeHint() const {
    return {std::min(sizeHint().width(), fontMetrics().horizontalAdvance(QStringLiteral("ana…com"))),
            fontMetrics().height()};
}

void ElidedLabel::resizeEvent(QResizeEvent* event) {
    QLabel::resizeEvent(event);
    elide();
}

void ElidedLabel::changeEvent(QEvent* event) {
    QLabel::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        updateGeometry();
        elide();
    }
}

void ElidedLabel::elide() {
    const QString shown = fontMetrics().elidedText(fullText_, Qt::ElideMiddle, width());
    setText(shown);
    setToolTip(shown == fullText_ ? QString() : fullText_);
}

} // namespace fernhollow
