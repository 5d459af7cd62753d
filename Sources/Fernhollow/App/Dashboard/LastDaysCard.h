#pragma once

#include "App/Dashboard/DashboardCard.h"
#include "KeypressCore/Calendar.h"
#include "Model/AppTracker.h"
#include "Model/ProductivityMetrics.h"
#include "Presentation/DayColumns.h"
#include "Presentation/DayText.h"
#include "Support/NumberText.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace fernhollow {

class BarChart;
class ChartClickOverlay;
class ElidedLabel;

/// The last 15 days, a bar for each; a day can be pointed at and opened.
class LastDaysCard : public DashboardCard {
    Q_OBJECT

public:
    LastDaysCard();
    ~LastDaysCard() override;

    /// `daily` is the tracker's history, `minValidDate` where it begins at the earliest.
    void show(const std::vector<AppTracker::DailyAppStats>& daily,
              const std::optional<ProductivityMetrics>& metrics, Instant minValidDate, Instant now);

    const std::optional<Instant>& selectedDate() const { return selectedDate_; }

Q_SIGNALS:
    void selectedDateChanged();
    void dayClicked(fernhollow::Instant day);

private:
    void showDays(std::vector<AppTracker::DailyAppStats> records, Instant now);
    void showMonth(const ProductivityMetrics& metrics, Instant now);
    void select(std::optional<Instant> day);
    void showHighlight();

    Calendar calendar_ = Calendar::autoupdatingCurrent();
    DayText dayText_;
    NumberText numberText_;
    std::optional<Instant> selectedDate_;
    std::optional<DayColumns> columns_;
    std::vector<std::int64_t> totals_; // of the columns
    BarChart* chart_;
    ChartClickOverlay* overlay_;
    ElidedLabel* reading_;
    QLabel* empty_;
};

} // namespace fernhollow
