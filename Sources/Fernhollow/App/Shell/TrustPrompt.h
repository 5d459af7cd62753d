#pragma once

#include "Platform/EventTap.h"

namespace fernhollow {

/// Shows the person why presses cannot be counted and what to do, in a message that blocks nothing. A
/// button performs the problem's action, if it has one.
void showTrustPrompt(const TrustProblem& problem);

} // namespace fernhollow
