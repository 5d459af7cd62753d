#include "Model/Sync/SentRows.h"

namespace fernhollow {
namespace {

using namespace std::chrono_literals;

constexpr auto believedFor = 1h;

template<class Map, class Key, class Value>
bool claimIn(Map& rows, const Key& key, const Value& value) {
    const auto [found, isNew] = rows.try_emplace(key, value);
    if (!isNew && found->second == value) {
        return false;
    }
    found->second = value;
    return true;
}

// Another value that was claimed meanwhile stays claimed.
template<class Map, class Key, class Value>
void releaseIn(Map& rows, const Key& key, const Value& value) {
    if (const auto found = rows.find(key); found != rows.end() && found->second == value) {
        rows.erase(found);
    }
}

} // namespace

SentRows::Day& SentRows::rowsOf(const DayKey& day, Moment now) {
    std::erase_if(days_, [now](const auto& entry) { return now - entry.second.since >= believedFor; });
    return days_.try_emplace(day, Day{now, {}, {}}).first->second;
}

bool SentRows::claim(const HourlyCountRow& row, Moment now) {
    return claimIn(rowsOf(row.day, now).hours, row.hour, row.count);
}

bool SentRows::claim(const AppHourlyCountRow& row, Moment now) {
    return claimIn(rowsOf(row.day, now).appHours, std::pair(row.hour, row.bundleId), row.count);
}

bool SentRows::claim(const AppRegistryRow& row, Moment now) {
    if (now - registry_.since >= believedFor) {
        registry_ = {now, {}};
    }
    return claimIn(registry_.apps, row.bundleId, std::pair(row.appName, row.isHidden));
}

void SentRows::release(const HourlyCountRow& row) {
    if (const auto day = days_.find(row.day); day != days_.end()) {
        releaseIn(day->second.hours, row.hour, row.count);
    }
}

void SentRows::release(const AppHourlyCountRow& row) {
    if (const auto day = days_.find(row.day); day != days_.end()) {
        releaseIn(day->second.appHours, std::pair(row.hour, row.bundleId), row.count);
    }
}

void SentRows::release(const AppRegistryRow& row) {
    releaseIn(registry_.apps, row.bundleId, std::pair(row.appName, row.isHidden));
}

} // namespace fernhollow
