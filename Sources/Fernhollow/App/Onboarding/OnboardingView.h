#pragma once

#include "App/Onboarding/OnboardingSteps.h"

#include <QWidget>

#include <functional>

class QPushButton;

namespace fernhollow {

class StepContainer;
class StepDots;

/// The introduction in four steps, shown the first time that an account is used on this machine.
///
/// Its language is the user's at each step. `onComplete` is called once, when the person skips or finishes.
class OnboardingView : public QWidget {
public:
    explicit OnboardingView(std::function<void()> onComplete, QWidget* parent = nullptr);

    int currentStep() const { return currentStep_; }

protected:
    void showEvent(QShowEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    static constexpr int totalSteps = 4;
    QWidget* makeNavigationBar();
    void goTo(int step);
    void showTexts();
    void complete();

    std::function<void()> onComplete_;
    int currentStep_ = 0;
    OnboardingLabels texts_;
    StepContainer* steps_;
    StepDots* dots_;
    QPushButton* skip_;
    QPushButton* previous_;
    QPushButton* next_;
};

} // namespace fernhollow
