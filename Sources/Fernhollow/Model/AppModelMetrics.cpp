// How the model keeps the figures and the history per application up to date.

#include "KeypressCore/DailyCountsStore.h"
#include "KeypressCore/DailyCountsStoreError.h"
#include "Model/AppModel.h"
#include "Support/DebugLog.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace fernhollow {
namespace {

constexpr std::ptrdiff_t week = 7;

std::int64_t countOf(const HistoryCache& counts, const std::string& day) {
    const auto found = counts.find(day);
    return found != counts.end() ? found->second : 0;
}

} // namespace

AppModel::Reads AppModel::askForFigures() const {
    Reads reads{store_, cloudSync_, currentDay_, store_->fetchHourlyCounts(currentDay_), {}, {}, {}};
    if (cloudSync_) {
        reads.history = cloudSync_->getAggregatedHistory();
        reads.hourly = cloudSync_->getAggregatedHourly();
        reads.appDaily = cloudSync_->getAggregatedAppDaily();
    }
    return reads;
}

std::vector<DailyCountPoint> AppModel::history(const HistoryInputs& inputs) {
    HistoryCache local;
    for (const DailyCountRow& row : inputs.rows) {
        local.emplace(row.day.rawValue, row.count);
    }
    const bool isLogged = historyLog_.isDue(inputs.day.rawValue, inputs.today, clock_.now());
    if (isLogged) {
        debugLog("[AppModel] refreshLast30DaysFromDisk: currentDay=" + inputs.day.rawValue +
                 ", todayCountAggregated=" + std::to_string(inputs.today));
    }
    std::vector<DailyCountPoint> points;
    for (const RecentDays::Day& day : recentDays_.upTo(clock_.now(), calendar_)) {
        if (day.noon < inputs.first) {
            continue;
        }
        std::int64_t count = inputs.today;
        if (day.key == inputs.day) {
            if (isLogged) {
                debugLog("[AppModel] Today (" + day.key.rawValue +
                         "): using local todayCountAggregated=" + std::to_string(count));
            }
        } else {
            const std::int64_t there = inputs.remote ? countOf(*inputs.remote, day.key.rawValue) : 0;
            count = std::max({countOf(local, day.key.rawValue), there, std::int64_t{0}});
        }
        points.push_back({day.noon, count});
    }
    return points;
}

QCoro::Task<> AppModel::recalculateMetrics(Reads reads) {
    const auto self = shared_from_this();
    MetricsInputs inputs;
    inputs.day = reads.day;
    if (reads.cloudSync) {
        inputs.history = co_await reads.history.value();
        inputs.hourly = co_await reads.hourly.value();
    }
    try {
        inputs.rows = co_await reads.hours;
    } catch (const DailyCountsStoreError&) {
        inputs.rows.clear(); // the backend's hours are left
    }
    if (reads.store != store_ || reads.day != currentDay_) {
        co_return; // another account's or day's
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
    HourlyCache hours = inputs.hourly ? *inputs.hourly : HourlyCache();
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
        const std::int64_t past = inputs.history ? countOf(*inputs.history, day.key.rawValue) : 0;
        month.push_back({day.key, day.key == inputs.day ? inputs.today : past});
    }
    const auto end = month.end();
    const auto size = std::ssize(month); // shorter where the calendar cannot tell a day
    const std::vector<DailyCountRow> thisWeek(end - std::min(size, week), end);
    const std::vector<DailyCountRow> lastWeek(end - std::min(size, 2 * week), end - std::min(size, week));
    return ProductivityMetrics::calculate(inputs.today, hourly, thisWeek, lastWeek, month, calendar_, now);
}

// Only when something of it changed: most of the time it is the same for hours.
QCoro::Task<> AppModel::refreshAppHistory(Reads reads) {
    const auto self = shared_from_this();
    if (!reads.cloudSync) {
        co_return;
    }
    auto remote = co_await reads.appDaily.value();
    const Instant noon = calendar_.noon(clock_.now()).value_or(clock_.now());
    const AppHistoryInputs inputs{remote, noon};
    if (reads.cloudSync != cloudSync_ || inputs == appHistoryInputs_) {
        co_return;
    }
    appHistoryInputs_ = inputs;
    co_await appTracker_->updateLast30DaysAppDaily(std::move(remote));
}

} // namespace fernhollow
