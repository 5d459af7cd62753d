#pragma once

#include "App/Charts/BarChart.h"
#include "App/Dashboard/DashboardCard.h"
#include "Support/NumberText.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace fernhollow {

class AppModel;
class ElidedLabel;
class FigureLabel;

/// Today's count and today by the hour.
class TodayCard : public DashboardCard {
public:
    explicit TodayCard(std::shared_ptr<AppModel> model);
    ~TodayCard() override;

    void refreshCount();
    void refreshHours();

    /// The width that the card may have, by which the count chooses its size: the card's own would follow the
    /// count.
    void setRoom(int width);

private:
    QWidget* makeHeader();
    void fitCount();
    bool hasCounts() const;
    void pointAt(std::optional<int> hour);
    std::vector<BarChart::Segment> hourlySegments();

    std::shared_ptr<AppModel> model_;
    NumberText numberText_;
    std::optional<int> pointedAt_;          // the hour under the pointer
    std::array<std::int64_t, 24> totals_{}; // of the hours
    FigureLabel* count_;
    FigureLabel* average_;
    QWidget* averageFigure_;
    QLabel* title_;
    ElidedLabel* reading_;
    QLabel* beginning_; // shown until the first press
    BarChart* chart_;
    int room_ = 0;
    std::vector<std::size_t> order_; // of the tracker's entries as they are drawn; it hardly ever changes
};

} // namespace fernhollow
