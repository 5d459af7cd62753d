#pragma once

#include "App/Dashboard/DashboardCard.h"

#include <memory>

namespace fernhollow {

class AppModel;
class BarChart;
class FigureLabel;

/// Today's count and today by the hour.
class TodayCard : public DashboardCard {
public:
    explicit TodayCard(std::shared_ptr<AppModel> model);

    void refreshCount();
    void refreshHours();

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    QWidget* makeHeader();
    void fitCount();

    std::shared_ptr<AppModel> model_;
    FigureLabel* count_;
    FigureLabel* average_;
    QWidget* averageFigure_;
    BarChart* chart_;
};

} // namespace fernhollow
