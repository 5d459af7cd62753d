#pragma once

#include "Support/Localization.h"

#include <QString>

#include <array>

namespace fernhollow {

/// What the introduction says in one language.
struct OnboardingTexts {
    struct Feature {
        QString title;
        QString description;
    };

    QString welcomeTitle;
    QString welcomeSubtitle;
    QString dayOneTitle;
    QString dayOneExplanation;
    QString dayOneHighlight;
    QString howItWorksTitle;
    std::array<Feature, 3> features;
    QString readyTitle;
    QString readySubtitle;
    QString privacyNote;
    QString skip;
    QString previous;
    QString next;
    QString getStarted;

    static const OnboardingTexts& in(AppLanguage language);
};

} // namespace fernhollow
