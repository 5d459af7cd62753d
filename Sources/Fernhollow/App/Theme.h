#pragma once

#include <QColor>
#include <QFont>

class QFrame;
class QWidget;

namespace fernhollow::Theme {

/// The steps of the type scale, relative to the user's own font size.
enum class TextStyle { largeTitle, title, title2, headline, body, callout, caption, caption2 };

QFont font(TextStyle style, QFont::Weight weight = QFont::Normal);

/// Colours of the dark appearance; each text colour has a contrast of at least 4.5:1 on `window`.
inline constexpr QColor window{0x1e, 0x1f, 0x22};
inline constexpr QColor raised{0x26, 0x28, 0x2c}; ///< footer and fields
inline constexpr QColor separator{0x3a, 0x3c, 0x41};
inline constexpr QColor primary{0xf2, 0xf3, 0xf5};
inline constexpr QColor secondary{0xb4, 0xb6, 0xbd};
inline constexpr QColor tertiary{0x92, 0x95, 0x9e};
inline constexpr QColor accent{0x1f, 0x6f, 0xeb};
inline constexpr QColor failure{0xff, 0x7b, 0x72};

/// Gives every window of the program the dark appearance. Called once, before the first window.
void applyDark();

/// A line between what is above and below it.
QFrame* makeDivider();

/// Sets the colour of a widget's text.
void setTextColor(QWidget& widget, const QColor& color);

} // namespace fernhollow::Theme
