#pragma once

#include "App/Charts/BarChart.h"
#include "App/Dashboard/DashboardCard.h"

#include <memory>
#include <vector>

namespace fernhollow {

class AppModel;
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
    std::vector<BarChart::Segment> hourlySegments();

    std::shared_ptr<AppModel> model_;
    FigureLabel* count_;
    FigureLabel* average_;
    QWidget* averageFigure_;
    BarChart* chart_;
    std::vector<std::size_t> order_; // of the tracker's entries as they are drawn; it hardly ever changes
};

} // namespace fernhollow
