#include "App/Onboarding/StepDots.h"

#include "App/Widgets/Theme.h"

#include <QPainter>

#include <algorithm>

namespace fernhollow {
namespace {

constexpr int diameter = 8;
constexpr int spacing = 8;
constexpr int changeDuration = 200; // ms
constexpr double otherOpacity = 0.3;

/// `share` of the way from the colour of the other steps to the one of the current step.
QColor dotColor(double share) {
    const auto mix = [share](int other, int current) {
        return static_cast<int>(other + (current - other) * share);
    };
    const QColor& other = Theme::secondary;
    const QColor& current = Theme::tint;
    const double alpha = otherOpacity + (1 - otherOpacity) * share;
    return {mix(other.red(), current.red()), mix(other.green(), current.green()),
            mix(other.blue(), current.blue()), static_cast<int>(alpha * 255)};
}

} // namespace

StepDots::StepDots(int count, QWidget* parent) : QWidget(parent), count_(count) {
    setFixedSize(count_ * diameter + (count_ - 1) * spacing, diameter);
    change_.setStartValue(0.0);
    change_.setEndValue(1.0);
    change_.setDuration(changeDuration);
    change_.setEasingCurve(QEasingCurve::InOutQuad);
    connect(&change_, &QVariantAnimation::valueChanged, this, qOverload<>(&QWidget::update));
}

void StepDots::setCurrent(int step, bool isAnimated) {
    previous_ = isAnimated ? current_ : step;
    current_ = step;
    change_.stop();
    if (isAnimated) {
        change_.start();
    }
    update();
}

void StepDots::paintEvent(QPaintEvent*) {
    const bool isRunning = change_.state() == QAbstractAnimation::Running;
    const double progress = isRunning ? change_.currentValue().toDouble() : 1;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    for (int step = 0; step < count_; ++step) {
        const double share = step == current_ ? progress : (step == previous_ ? 1 - progress : 0);
        painter.setBrush(dotColor(share));
        painter.drawEllipse(step * (diameter + spacing), 0, diameter, diameter);
    }
}

void StepDots::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    change_.stop(); // it is not visible
}

} // namespace fernhollow
