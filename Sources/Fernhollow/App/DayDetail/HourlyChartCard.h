#pragma once

#include "Model/AppTracker.h"

#include <QFrame>

#include <vector>

class QLabel;

namespace fernhollow {

class BarChart;

/// The hours of a day, each a bar of what was typed in the applications.
class HourlyChartCard : public QFrame {
public:
    explicit HourlyChartCard(QWidget* parent = nullptr);

    void show(const std::vector<AppTracker::HourlyAppStats>& hourly);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void setMarks();

    BarChart* chart_;
    QLabel* empty_;
    int hoursBetweenLabels_ = 0;
};

} // namespace fernhollow
