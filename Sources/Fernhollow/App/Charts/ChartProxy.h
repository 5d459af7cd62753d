#pragma once

#include "App/Charts/BarChart.h"
#include "Presentation/DayColumns.h"

#include <utility>

namespace fernhollow {

/// Reads places on a chart of days as dates of its scale. The chart outlives it.
class ChartProxy {
public:
    ChartProxy(const BarChart& chart, DayColumns days) : chart_(&chart), days_(std::move(days)) {}

    /// The reading at `x` in the chart's coordinates: `readingAhead` after 12:00 of the column's day, from
    /// where the way back ends in that day whatever clocks did in between. Nothing beside the plot.
    std::optional<Instant> date(double x) const {
        const auto column = chart_->columnAt(x);
        if (!column || *column >= days_.count()) {
            return std::nullopt;
        }
        return days_.noons()[static_cast<std::size_t>(*column)] + readingAhead;
    }

private:
    const BarChart* chart_;
    DayColumns days_;
};

} // namespace fernhollow
