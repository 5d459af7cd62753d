#include "App/Widgets/ElidedLabel.h"

#include <QEvent>
#include <QTextDocument>

namespace fernhollow {

ElidedLabel::ElidedLabel(Qt::TextElideMode mode, QWidget* parent) : QLabel(parent), mode_(mode) {
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Preferred);
}

void ElidedLabel::setFullText(const QString& text) {
    const QString line = text.simplified();
    if (line == fullText_) {
        return;
    }
    fullText_ = line;
    setAccessibleName(line);
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
    const QString shown = fontMetrics().elidedText(fullText_, mode_, width());
    setText(shown);
    if (shown == fullText_) {
        setToolTip({});
    } else {
        // A tooltip reads what looks like HTML as HTML.
        setToolTip(Qt::mightBeRichText(fullText_)
                       ? QStringLiteral("<span>%1</span>").arg(fullText_.toHtmlEscaped())
                       : fullText_);
    }
}

} // namespace fernhollow
