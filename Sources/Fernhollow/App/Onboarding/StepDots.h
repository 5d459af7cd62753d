#pragma once

#include <QVariantAnimation>
#include <QWidget>

namespace fernhollow {

/// Which of some steps is shown, as a row of dots.
class StepDots : public QWidget {
public:
    explicit StepDots(int count, QWidget* parent = nullptr);

    void setCurrent(int step, bool isAnimated);

protected:
    void paintEvent(QPaintEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    int count_;
    int current_ = 0;
    int previous_ = 0;
    QVariantAnimation change_; // from 0, the previous step, to 1, the current one
};

} // namespace fernhollow
