#pragma once

#include <QAccessible>

class QWidget;

namespace fernhollow {

/// Tells a screen reader what a widget is, where the toolkit knows it as a filler only. Call it before the
/// widget is shown.
void setAccessibleRole(QWidget& widget, QAccessible::Role role);

} // namespace fernhollow
