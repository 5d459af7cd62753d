#pragma once

#include <QString>

namespace fernhollow {

/// A whole number as some locale writes it, "12,345", shortened for an icon: "12k".
///
/// Three digits at most keep their meaning, the rest becomes k, M, G, T, P or E; with a single digit
/// left one decimal is kept ("1.2k"). Rounded toward zero: an icon never promises presses that were
/// not made. Digits and decimal mark stay those of the text's locale. A text without digits is cut
/// after four characters.
QString compactCount(const QString& number);

/// What a tooltip says of the number: "Fernhollow: 12,345 key presses today".
QString countToolTip(const QString& number);

} // namespace fernhollow
