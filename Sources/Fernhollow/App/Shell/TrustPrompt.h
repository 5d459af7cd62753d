#pragma once

#include "Platform/EventTap.h"

namespace fernhollow {

/// Tells the person, in a message that waits for nobody, why presses cannot be counted and what to do. A
/// button performs the problem's action, if it has one.
void showTrustPrompt(const TrustProblem& problem);

} // namespace fernhollow
