#include "App/Charts/AppSegments.h"

#include "App/Widgets/AppColor.h"
#include "App/Widgets/Theme.h"
#include "Presentation/DashboardSeries.h"

#include <algorithm>
#include <map>
#include <unordered_map>

namespace fernhollow {
namespace {

constexpr std::size_t mostColors = 8; // of applications in one chart

/// The applications that share one colour.
std::vector<std::string_view> others(const std::vector<AppCount>& counts) {
    std::unordered_map<std::string_view, std::int64_t> totals;
    for (const AppCount& one : counts) {
        totals[one.bundleId] += one.count;
    }
    totals.erase(DashboardSeries::allApps); // a whole day is not an application
    totals.erase(DashboardSeries::placeholder);
    std::vector<std::pair<std::int64_t, std::string_view>> ranking;
    for (const auto& [bundleId, total] : totals) {
        ranking.emplace_back(-total, bundleId);
    }
    std::vector<std::string_view> others;
    if (ranking.size() > mostColors + 1) { // a single one has its own colour just as well
        std::ranges::sort(ranking);
        std::transform(ranking.begin() + mostColors, ranking.end(), std::back_inserter(others),
                       [](const auto& place) { return place.second; });
        std::ranges::sort(others);
    }
    return others;
}

} // namespace

std::vector<BarChart::Segment> appSegments(const std::vector<AppCount>& counts) {
    const auto folded = others(counts);
    std::map<int, std::int64_t> rest; // by column
    std::vector<BarChart::Segment> segments;
    segments.reserve(counts.size());
    for (const AppCount& one : counts) {
        if (std::ranges::binary_search(folded, one.bundleId)) {
            rest[one.column] += one.count;
        } else {
            segments.push_back({one.column, one.count, colorOf(one.bundleId)});
        }
    }
    for (const auto& [column, count] : rest) {
        segments.push_back({column, count, Theme::others});
    }
    return segments;
}

} // namespace fernhollow
