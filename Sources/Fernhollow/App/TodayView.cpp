#include "App/TodayView.h"

#include "App/Theme.h"

#include <QLabel>
#include <QVBoxLayout>

namespace fernhollow {
namespace {

constexpr int margin = 24;
constexpr double largestSize = 6; // times the body text

QLabel* makeCaption(const QString& text) {
    auto* caption = new QLabel(text);
    caption->setFont(Theme::font(Theme::TextStyle::title2));
    caption->setAlignment(Qt::AlignCenter);
    Theme::setTextColor(*caption, Theme::secondary);
    return caption;
}

} // namespace

TodayView::TodayView(QWidget* parent) : QWidget(parent), number_(new QLabel) {
    // Takes the keyboard when the window opens, so that no key pressed by chance reaches a button.
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName(QStringLiteral("Today"));
    number_->setAlignment(Qt::AlignCenter);
    number_->setTextFormat(Qt::PlainText);
    number_->setAccessibleDescription(QStringLiteral("Key presses today"));
    number_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    Theme::setTextColor(*number_, Theme::primary);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->setSpacing(0);
    layout->addStretch();
    layout->addWidget(makeCaption(QStringLiteral("Today")));
    layout->addWidget(number_);
    layout->addWidget(makeCaption(QStringLiteral("key presses")));
    layout->addStretch();
}

void TodayView::setCount(const QString& formatted) {
    if (formatted == number_->text()) {
        return;
    }
    const bool sameLength = formatted.size() == number_->text().size();
    number_->setText(formatted);
    number_->setAccessibleName(formatted);
    if (!sameLength) {
        fitNumber();
    }
}

void TodayView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    fitNumber();
}

void TodayView::fitNumber() {
    QFont font = Theme::font(Theme::TextStyle::body, QFont::Bold);
    const double largest = font.pointSizeF() * largestSize;
    font.setPointSizeF(largest);
    // Measured with the widest digit in every place, so that typing does not make the size jump.
    QString widest = number_->text();
    for (QChar& character : widest) {
        character = character.isDigit() ? QLatin1Char('8') : character;
    }
    const int needed = QFontMetrics(font).horizontalAdvance(widest);
    const int available = width() - 2 * margin;
    if (needed > available && needed > 0) {
        font.setPointSizeF(largest * available / needed);
    }
    number_->setFont(font);
}

} // namespace fernhollow
