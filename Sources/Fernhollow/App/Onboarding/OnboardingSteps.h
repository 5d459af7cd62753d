#pragma once

#include "App/Onboarding/OnboardingTexts.h"

#include <functional>
#include <utility>
#include <vector>

class QLabel;
class QWidget;

namespace fernhollow {

/// Labels and the texts that they show.
using OnboardingLabels = std::vector<std::pair<QLabel*, std::function<QString(const OnboardingTexts&)>>>;

// The four steps. Each adds its labels to `labels` and leaves their texts to the caller.
QWidget* makeWelcomeStep(OnboardingLabels& labels);
QWidget* makeDayOneStep(OnboardingLabels& labels);
QWidget* makeHowItWorksStep(OnboardingLabels& labels);
QWidget* makeReadyStep(OnboardingLabels& labels);

} // namespace fernhollow
