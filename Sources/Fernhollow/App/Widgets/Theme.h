#pragma once

#include <QColor>
#include <QFont>

class QFrame;
class QLabel;
class QString;
class QWidget;

namespace fernhollow::Theme {

/// The steps of the type scale, relative to the user's own font size.
enum class TextStyle { largeTitle, title, title2, headline, body, callout, subheadline, caption, caption2 };

QFont font(TextStyle style, QFont::Weight weight = QFont::Normal);

/// A font of `points` where the body text has 13, in the user's own size.
QFont font(double points, QFont::Weight weight = QFont::Normal);

/// A length of `points`, likewise: for what has to keep up with the texts beside it.
int scaled(double points);

/// Colours of the dark appearance; each text colour has a contrast of at least 4.5:1 on every ground that it
/// stands on.
inline constexpr QColor window{0x1e, 0x1f, 0x22};
inline constexpr QColor raised{0x26, 0x28, 0x2c};  ///< footer and fields
inline constexpr QColor control{0x28, 0x2a, 0x2f}; ///< cards
inline constexpr QColor row{0x33, 0x35, 0x3b};     ///< rows of a list on a card
inline constexpr QColor separator{0x3a, 0x3c, 0x41};
inline constexpr QColor primary{0xf2, 0xf3, 0xf5};
inline constexpr QColor secondary{0xb4, 0xb6, 0xbd};
inline constexpr QColor tertiary{0xa1, 0xa4, 0xac};
inline constexpr QColor accent{0x1f, 0x6f, 0xeb};
inline constexpr QColor tint{0x5a, 0x9b, 0xff}; ///< the accent where it is text, a symbol or the focus
inline constexpr QColor failure{0xff, 0x7b, 0x72};
inline constexpr QColor success{0x56, 0xd3, 0x64};
inline constexpr QColor highlight{0xff, 0x9f, 0x0a};
inline constexpr QColor yellow{0xff, 0xd6, 0x0a};
inline constexpr QColor bars{0x4c, 0x8d, 0xff};   ///< bars that belong to no application
inline constexpr QColor others{0x6a, 0x6e, 0x78}; ///< the applications of a chart beyond the busiest

/// Gives every window of the program the dark appearance. Called once, before the first window.
void applyDark();

/// A line between what is above and below it.
QFrame* makeDivider();

/// A label of plain text.
QLabel* makeLabel(const QString& text, const QFont& font, const QColor& color);
inline QLabel* makeLabel(const QString& text, TextStyle style, const QColor& color) {
    return makeLabel(text, font(style), color);
}

/// A card with rounded corners, on the colour for cards.
QFrame* makeCard(int radius);
void styleAsCard(QFrame& frame, int radius);

/// Fills what lies behind a widget with one colour, so that drawing it again draws nothing else again: under
/// it lie cards whose rounded shapes are expensive to draw with each press.
void setGround(QWidget& widget, const QColor& color);

/// Sets the colour of a widget's text.
void setTextColor(QWidget& widget, const QColor& color);

} // namespace fernhollow::Theme
