#pragma once

#include "App/Charts/BarChart.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace fernhollow {

/// What was typed in one application in one column of a chart.
struct AppCount {
    int column = 0;
    std::string_view bundleId;
    std::int64_t count = 0;
};

/// The counts as segments in the order given, each in its application's colour. Only the busiest applications
/// of the chart can be told apart in it: those beyond lie together on top of their column, in grey.
std::vector<BarChart::Segment> appSegments(const std::vector<AppCount>& counts);

} // namespace fernhollow
