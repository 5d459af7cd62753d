#pragma once

// The library's header uses Qt's keywords, which this project does without.
#define signals Q_SIGNALS
#define slots Q_SLOTS
// NOLINTNEXTLINE(bugprone-macro-parentheses): a declaration bears none
#define foreach(variable, container) for (variable : container)
#include <qcustomplot.h>
#undef signals
#undef slots
#undef foreach
