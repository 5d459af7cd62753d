// How the model keeps the figures and the history per application up to date.

#include "KeypressCore/DailyCountsStore.h"
#include "KeypressCore/DailyCountsStoreError.h"
#include "Model/AppModel.h"

#include <algorithm>

namespace fernhollow {

QCoro::Task<> AppModel::recalculateMetrics(Future<std::vector<HourlyCountRow>> fetchingHours) {
    const auto self = shared_from_this();
    const auto store = store_;
    const auto cloudSync = cloudSync_;
    MetricsInputs inputs;
    inputs.day = currentDay_;
    inputs.history = std::make_shared<const HistoryCache>();
    inputs.hourly = std::make_shared<const HourlyCache>();
    if (cloudSync) {
        auto history = cloudSync->getAggregatedHistory();
        auto hourly = cloudSync->getAggregatedHourly();
        inputs.history = co_await history;
        inputs.hourly = co_await hourly;
    }
    try {
        inputs.rows = co_await fetchingHours;
    } catch (const DailyCountsStoreError&) {
        inputs.rows.clear(); // the backend's hours are left
    }
    if (store != store_ || inputs.day != currentDay_) {
        co_return;
    }
    const Instant now = clock_.now();
    const auto& days = recentDays_.upTo(now, calendar_);
    inputs.noon = days.back().noon;
    inputs.today = todayCountAggregated.get();
    if (metrics.get() && inputs == metricsInputs_) {
        co_return; // each second, most of the time
    }
    metrics.set(calculateMetrics(inputs, days, now));
    metricsInputs_ = std::move(inputs);
}

ProductivityMetrics AppModel::calculateMetrics(const MetricsInputs& inputs,
                                               const std::vector<RecentDays::Day>& days, Instant now) const {
    HourlyCache hours = *inputs.hourly;
    for (const HourlyCountRow& row : inputs.rows) {
        std::int64_t& count = hours[row.hour];
        count = std::max(count, row.count);
    }
    std::vector<HourlyCountRow> hourly;
    for (const auto& [hour, count] : hours) {
        hourly.push_back({inputs.day, hour, count});
    }
    std::vector<DailyCountRow> month;
    for (const RecentDays::Day& day : days) {
        const auto known = inputs.history->find(day.key.rawValue);
        const std::int64_t past = known != inputs.history->end() ? known->second : 0;
        month.push_back({day.key, day.key == inputs.day ? inputs.today : past});
    }
    constexpr std::ptrdiff_t week = 7;
    const std::vector<DailyCountRow> thisWeek(month.end() - week, month.end());
    const std::vector<DailyCountRow> lastWeek(month.end() - 2 * week, month.end() - week);
    return ProductivityMetrics::calculate(inputs.today, hourly, thisWeek, lastWeek, month, calendar_, now);
}

// Only when something of it changed: the history logs what it is given, which each second would fill the log.
QCoro::Task<> AppModel::refreshAppHistory() {
    const auto self = shared_from_this();
    const auto cloudSync = cloudSync_;
    if (!cloudSync) {
        co_return;
    }
    auto remote = co_await cloudSync->getAggregatedAppDaily();
    const Instant noon = calendar_.noon(clock_.now()).value_or(clock_.now());
    const AppHistoryInputs inputs{remote, noon};
    if (cloudSync != cloudSync_ || inputs == appHistoryInputs_) {
        co_return;
    }
    appHistoryInputs_ = inputs;
    co_await appTracker_->updateLast30DaysAppDaily(std::move(remote));
}

} // namespace fernhollow
