#include "Model/Sync/SentRows.h"

namespace fernhollow {
namespace {

using namespace std::chrono_literals;

constexpr auto believedFor = 1h;

template<class Map, class Key, class Value>
bool holds(const Map& map, const Key& key, const Value& value) {
    const auto found = map.find(key);
    return found != map.end() && found->second == value;
}

} // namespace

void SentRows::begin(const DayKey& day, Instant now) {
    if (day != day_ || now < since_ || now - since_ >= believedFor) {
        *this = {};
        day_ = day;
        since_ = now;
    }
}

bool SentRows::hold(const HourlyCountRow& row) const {
    return row.day == day_ && holds(hours_, row.hour, row.count);
}

bool SentRows::hold(const AppHourlyCountRow& row) const {
    return row.day == day_ && holds(appHours_, std::pair(row.hour, row.bundleId), row.count);
}

bool SentRows::hold(const AppRegistryRow& row) const {
    return holds(apps_, row.bundleId, std::pair(row.appName, row.isHidden));
}

void SentRows::note(const HourlyCountRow& row) {
    if (row.day == day_) {
        hours_[row.hour] = row.count;
    }
}

void SentRows::note(const AppHourlyCountRow& row) {
    if (row.day == day_) {
        appHours_[{row.hour, row.bundleId}] = row.count;
    }
}

void SentRows::note(const AppRegistryRow& row) {
    apps_[row.bundleId] = {row.appName, row.isHidden};
}

} // namespace fernhollow
