#include "App/Widgets/Theme.h"

#include <QApplication>
#include <QFrame>
#include <QLabel>
#include <QPalette>
#include <QWidget>

namespace fernhollow::Theme {
namespace {

constexpr double bodyPoints = 13; // the scale's sizes are those of a body text of that many points

QFont withRelativeSize(double size, QFont::Weight weight) {
    QFont font = QApplication::font();
    font.setPointSizeF((font.pointSizeF() > 0 ? font.pointSizeF() : 10) * size);
    font.setWeight(weight);
    return font;
}

double relativeSize(TextStyle style) {
    switch (style) {
    case TextStyle::largeTitle:
        return 26.0 / 13;
    case TextStyle::title:
        return 22.0 / 13;
    case TextStyle::title2:
        return 17.0 / 13;
    case TextStyle::headline:
    case TextStyle::body:
        return 1;
    case TextStyle::callout:
    case TextStyle::subheadline:
        return 12.0 / 13;
    case TextStyle::caption:
        return 11.0 / 13;
    case TextStyle::caption2:
        return 10.5 / 13;
    }
    return 1;
}

QPalette darkPalette() {
    QPalette palette;
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::WindowText, primary);
    palette.setColor(QPalette::Base, raised);
    palette.setColor(QPalette::AlternateBase, window);
    palette.setColor(QPalette::Text, primary);
    palette.setColor(QPalette::PlaceholderText, tertiary);
    palette.setColor(QPalette::Button, raised);
    palette.setColor(QPalette::ButtonText, primary);
    palette.setColor(QPalette::ToolTipBase, raised);
    palette.setColor(QPalette::ToolTipText, primary);
    palette.setColor(QPalette::Highlight, accent);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, accent);
    palette.setColor(QPalette::Disabled, QPalette::ButtonText, tertiary);
    palette.setColor(QPalette::Disabled, QPalette::WindowText, tertiary);
    palette.setColor(QPalette::Disabled, QPalette::Text, tertiary);
    return palette;
}

// Only what a palette cannot say: rounded shapes, and a focus that is seen on every control.
constexpr const char* styleSheet = R"(
QLineEdit {
    background: #26282c; border: 1px solid #55585f; border-radius: 6px; padding: 6px 8px;
    selection-background-color: #1f6feb;
}
QLineEdit:focus { border: 2px solid #5a9bff; padding: 5px 7px; }
QPushButton[prominent="true"] {
    background: #1f6feb; color: white; border: 2px solid transparent; border-radius: 8px; padding: 8px;
}
QPushButton[prominent="true"][wide="true"] { padding: 8px 24px; }
QPushButton[prominent="true"]:hover { background: #1a66dc; }
QPushButton[prominent="true"]:pressed { background: #1757bd; }
QPushButton[prominent="true"]:focus { border-color: #a8ccff; }
QPushButton[prominent="true"]:disabled { background: #34373d; color: #a1a4ac; }
QPushButton[plain="true"] {
    background: transparent; border: 1px solid transparent; border-radius: 4px; padding: 2px 6px;
}
QPushButton[plain="true"]:hover { background: #34373d; }
QPushButton[plain="true"]:pressed { background: #3f434a; }
QPushButton[plain="true"]:focus { border-color: #5a9bff; }
QPushButton[secondary="true"] {
    background: #34373d; border: 2px solid transparent; border-radius: 8px; padding: 8px 12px;
}
QPushButton[secondary="true"]:hover { background: #3f434a; }
QPushButton[secondary="true"]:pressed { background: #2c2f34; }
QPushButton[secondary="true"]:focus { border-color: #5a9bff; }
QDialog QPushButton[prominent="true"] { padding: 8px 16px; }
QPlainTextEdit {
    background: #26282c; border: 1px solid #55585f; border-radius: 6px; padding: 4px;
    selection-background-color: #1f6feb;
}
QPlainTextEdit:focus { border-color: #5a9bff; }
QFrame[popover="true"] { background: #26282c; border: 1px solid #55585f; border-radius: 8px; }
QScrollBar:vertical { background: transparent; width: 10px; margin: 0; }
QScrollBar::handle:vertical { background: #55585f; border-radius: 3px; margin: 2px; min-height: 24px; }
QScrollBar::handle:vertical:hover { background: #7a7e87; }
QScrollBar:horizontal { background: transparent; height: 10px; margin: 0; }
QScrollBar::handle:horizontal { background: #55585f; border-radius: 3px; margin: 2px; min-width: 24px; }
QScrollBar::handle:horizontal:hover { background: #7a7e87; }
QScrollBar::add-line:horizontal, QScrollBar::sub-line:horizontal { width: 0; }
QScrollBar::add-page:horizontal, QScrollBar::sub-page:horizontal { background: transparent; }
QScrollBar::add-line:vertical, QScrollBar::sub-line:vertical { height: 0; }
QScrollBar::add-page:vertical, QScrollBar::sub-page:vertical { background: transparent; }
QToolTip { background: #26282c; color: #f2f3f5; border: 1px solid #55585f; padding: 3px; }
)";

} // namespace

QFont font(TextStyle style, QFont::Weight weight) {
    return withRelativeSize(relativeSize(style),
                            style == TextStyle::headline ? std::max(weight, QFont::DemiBold) : weight);
}

QFont font(double points, QFont::Weight weight) {
    return withRelativeSize(points / bodyPoints, weight);
}

// 13 points of body text are 10 of a desktop's and 13 pixels there at 96 dots per inch.
int scaled(double points) {
    return qRound(points * QFontInfo(font(TextStyle::body)).pixelSize() / bodyPoints);
}

void applyDark() {
    QApplication::setStyle(QStringLiteral("Fusion"));
    QApplication::setPalette(darkPalette());
    qApp->setStyleSheet(QString::fromLatin1(styleSheet));
}

QFrame* makeDivider() {
    auto* divider = new QFrame;
    divider->setFixedHeight(1);
    divider->setAutoFillBackground(true);
    QPalette palette;
    palette.setColor(QPalette::Window, separator);
    divider->setPalette(palette);
    return divider;
}

QLabel* makeLabel(const QString& text, const QFont& font, const QColor& color) {
    auto* label = new QLabel(text);
    label->setTextFormat(Qt::PlainText);
    label->setFont(font);
    setTextColor(*label, color);
    return label;
}

QFrame* makeCard(int radius) {
    auto* card = new QFrame;
    styleAsCard(*card, radius);
    return card;
}

void styleAsCard(QFrame& frame, int radius) {
    frame.setObjectName(QStringLiteral("card"));
    frame.setStyleSheet(QStringLiteral("#card { background: %1; border-radius: %2px; }")
                            .arg(control.name(), QString::number(radius)));
}

void setGround(QWidget& widget, const QColor& color) {
    QPalette palette = widget.palette();
    palette.setColor(QPalette::Window, color);
    palette.setColor(QPalette::Base, color);
    widget.setPalette(palette);
    widget.setAutoFillBackground(true);
}

void setTextColor(QWidget& widget, const QColor& color) {
    QPalette palette = widget.palette();
    palette.setColor(QPalette::WindowText, color);
    palette.setColor(QPalette::ButtonText, color);
    widget.setPalette(palette);
}

} // namespace fernhollow::Theme
