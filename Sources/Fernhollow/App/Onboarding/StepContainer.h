#pragma once

#include <QAbstractSlider>
#include <QVariantAnimation>
#include <QWidget>

#include <vector>

class QScrollArea;

namespace fernhollow {

/// Shows one of its steps, which slide past when it changes. A step that is higher than its room scrolls.
class StepContainer : public QWidget {
public:
    explicit StepContainer(QWidget* parent = nullptr);

    void addStep(QWidget* step);
    void setCurrent(int step, bool isAnimated);

    /// Moves what is seen of a step that is higher than its room.
    void scroll(QAbstractSlider::SliderAction action);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void place();

    std::vector<QScrollArea*> steps_;
    int current_ = 0;
    int previous_ = 0;
    QVariantAnimation slide_; // from 0, the previous step, to 1, the current one
};

} // namespace fernhollow
