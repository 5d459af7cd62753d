#include "App/Onboarding/OnboardingView.h"

#include "App/Onboarding/StepContainer.h"
#include "App/Onboarding/StepDots.h"
#include "App/Widgets/Theme.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

#include <array>
#include <utility>

namespace fernhollow {
namespace {

constexpr int barPadding = 20;
constexpr int barSideMargin = 24;
constexpr int barSpacing = 16;
constexpr int plainButtonEdge = 7; // what a plain button adds to its text at each side

QPushButton* makePlainButton() {
    auto* button = new QPushButton;
    button->setProperty("plain", true);
    button->setAutoDefault(true);
    button->setFont(Theme::font(Theme::TextStyle::body));
    Theme::setTextColor(*button, Theme::secondary);
    return button;
}

} // namespace

OnboardingView::OnboardingView(std::function<void()> onComplete, QWidget* parent)
    : QWidget(parent), onComplete_(std::move(onComplete)), steps_(new StepContainer),
      dots_(new StepDots(totalSteps)), skip_(makePlainButton()), previous_(makePlainButton()),
      next_(new QPushButton) {
    for (QWidget* step : {makeWelcomeStep(texts_), makeDayOneStep(texts_), makeHowItWorksStep(texts_),
                          makeReadyStep(texts_)}) {
        steps_->addStep(step);
    }
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(steps_, 1);
    layout->addWidget(makeNavigationBar());
    setFocusProxy(next_);
    goTo(0);
}

QWidget* OnboardingView::makeNavigationBar() {
    next_->setProperty("prominent", true);
    next_->setProperty("wide", true);
    next_->setAutoDefault(true);
    next_->setFont(Theme::font(Theme::TextStyle::body, QFont::Medium));
    connect(skip_, &QPushButton::clicked, this, &OnboardingView::complete);
    connect(previous_, &QPushButton::clicked, this, [this] { goTo(currentStep_ - 1); });
    connect(next_, &QPushButton::clicked, this, [this] {
        if (currentStep_ < totalSteps - 1) {
            goTo(currentStep_ + 1);
        } else {
            complete();
        }
    });

    auto* bar = new QWidget;
    bar->setAutoFillBackground(true);
    QPalette palette = bar->palette();
    palette.setColor(QPalette::Window, Theme::raised);
    bar->setPalette(palette);
    auto* layout = new QVBoxLayout(bar);
    layout->setContentsMargins(barSideMargin, barPadding, barSideMargin, barPadding);
    layout->setSpacing(barSpacing);
    layout->addWidget(dots_, 0, Qt::AlignHCenter);
    auto* row = new QHBoxLayout;
    row->setContentsMargins(-plainButtonEdge, 0, 0, 0); // the text stands at the margin, and not its button
    row->addWidget(skip_);
    row->addWidget(previous_);
    row->addStretch();
    row->addWidget(next_);
    layout->addLayout(row);
    return bar;
}

void OnboardingView::goTo(int step) {
    const bool wantsAnimation = style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this) > 0;
    const bool isAnimated = wantsAnimation && isVisible() && step != currentStep_;
    currentStep_ = step;
    const bool hadFocus = previous_->hasFocus();
    skip_->setVisible(step == 0);
    previous_->setVisible(step > 0);
    if (hadFocus && step == 0) {
        next_->setFocus(); // else the focus would land on Skip, which the person did not ask for
    }
    steps_->setCurrent(step, isAnimated);
    dots_->setCurrent(step, isAnimated);
    showTexts();
}

void OnboardingView::showTexts() {
    const OnboardingTexts& texts = OnboardingTexts::in(currentAppLanguage());
    for (const auto& [label, text] : texts_) {
        label->setText(text(texts));
    }
    skip_->setText(texts.skip);
    previous_->setText(texts.previous);
    next_->setText(currentStep_ < totalSteps - 1 ? texts.next : texts.getStarted);

    QString features = texts.howItWorksTitle;
    for (const auto& [title, description] : texts.features) {
        features += QStringLiteral(". %1: %2").arg(title, description);
    }
    // The keyboard stays on a button, so that is where a screen reader hears of the step.
    const std::array<QString, totalSteps> steps{
        texts.welcomeTitle + QStringLiteral(". ") + texts.welcomeSubtitle,
        texts.dayOneTitle + QStringLiteral(". ") + texts.dayOneExplanation + QLatin1Char(' ') +
            texts.dayOneHighlight,
        features,
        texts.readyTitle + QLatin1Char(' ') + texts.readySubtitle + QStringLiteral(". ") + texts.privacyNote,
    };
    for (QPushButton* button : {previous_, next_}) {
        button->setAccessibleDescription(steps.at(static_cast<std::size_t>(currentStep_)));
    }
}

void OnboardingView::complete() {
    if (const auto onComplete = std::exchange(onComplete_, nullptr)) {
        onComplete();
    }
}

void OnboardingView::showEvent(QShowEvent* event) {
    showTexts();
    QWidget::showEvent(event);
}

// Nothing in a step takes the keyboard, so its keys for scrolling arrive here.
void OnboardingView::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_PageUp:
        steps_->scroll(QAbstractSlider::SliderPageStepSub);
        break;
    case Qt::Key_PageDown:
        steps_->scroll(QAbstractSlider::SliderPageStepAdd);
        break;
    default:
        QWidget::keyPressEvent(event);
    }
}

} // namespace fernhollow
