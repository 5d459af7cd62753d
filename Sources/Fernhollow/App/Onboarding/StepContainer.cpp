#include "App/Onboarding/StepContainer.h"

#include <QScrollArea>
#include <QScrollBar>

namespace fernhollow {
namespace {

constexpr int slideDuration = 300; // ms

} // namespace

StepContainer::StepContainer(QWidget* parent) : QWidget(parent) {
    slide_.setStartValue(0.0);
    slide_.setEndValue(1.0);
    slide_.setDuration(slideDuration);
    slide_.setEasingCurve(QEasingCurve::InOutQuad);
    connect(&slide_, &QVariantAnimation::valueChanged, this, &StepContainer::place);
    connect(&slide_, &QVariantAnimation::finished, this, &StepContainer::place);
}

void StepContainer::addStep(QWidget* step) {
    auto* scroll = new QScrollArea(this);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setWidgetResizable(true);
    scroll->setFocusPolicy(Qt::NoFocus);
    scroll->setWidget(step);
    steps_.push_back(scroll);
    place();
}

void StepContainer::setCurrent(int step, bool isAnimated) {
    slide_.stop();
    previous_ = isAnimated && isVisible() ? current_ : step;
    current_ = step;
    scroll(QAbstractSlider::SliderToMinimum);
    if (previous_ != current_) {
        slide_.start();
    }
    place();
}

void StepContainer::scroll(QAbstractSlider::SliderAction action) {
    steps_.at(static_cast<std::size_t>(current_))->verticalScrollBar()->triggerAction(action);
}

void StepContainer::place() {
    const double progress =
        slide_.state() == QAbstractAnimation::Running ? slide_.currentValue().toDouble() : 1;
    const int side = current_ > previous_ ? 1 : -1;
    for (int i = 0; i < static_cast<int>(steps_.size()); ++i) {
        QScrollArea* step = steps_[static_cast<std::size_t>(i)];
        const double offset = i == current_ ? 1 - progress : -progress;
        const bool isShown = i == current_ || (i == previous_ && progress < 1);
        step->setGeometry(rect().translated(qRound(side * offset * width()), 0));
        step->setVisible(isShown);
    }
}

void StepContainer::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    place();
}

void StepContainer::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    slide_.stop(); // it is not visible
    place();
}

} // namespace fernhollow
