#include "Model/Sync/FetchPlan.h"

#include <algorithm>
#include <utility>

namespace fernhollow {
namespace {

using namespace std::chrono_literals;

// Cycles come each second or later, give or take what a timer is late.
constexpr auto slack = 100ms;

constexpr auto totalAge = 2s;
constexpr auto devicesAge = 60s;
constexpr auto devicesAgeWhileBusy = 3s;

// Thirty days are long lists, and what another machine counts today is hardly ever in them.
constexpr auto leastAge = 60s;

// In case a change went unnoticed.
constexpr auto greatestAge = 15min;

constexpr std::array lists = {Fetch::hours, Fetch::appHours, Fetch::days, Fetch::appDays};

} // namespace

bool FetchPlan::isOlder(Fetch fetch, std::chrono::milliseconds age, Moment now) const {
    const auto fetched = of(fetch).fetched;
    return !fetched || now - *fetched >= age - slack;
}

void FetchPlan::begin(Moment now) {
    spare_.reset();
    for (std::size_t tried = 0; tried < lists.size() && !spare_; ++tried) { // in turns: one can fail for long
        const Fetch list = lists.at(nextSpare_++ % lists.size());
        if (of(list).fetched && isOlder(list, of(list).mayBeStale ? leastAge : greatestAge, now)) {
            spare_ = list;
        }
    }
}

bool FetchPlan::isDue(Fetch fetch, Moment now) const {
    const bool isBusy = now < busyUntil_;
    if (fetch == Fetch::total) {
        return of(fetch).isStale || isBusy || isOlder(fetch, totalAge, now);
    }
    if (fetch == Fetch::devices) {
        return isOlder(fetch, isBusy && seen_.size() > 1 ? devicesAgeWhileBusy : devicesAge, now);
    }
    return of(fetch).isStale || spare_ == fetch;
}

void FetchPlan::noteFetched(Fetch fetch, Moment asked) {
    of(fetch) = {.fetched = asked, .isStale = false, .mayBeStale = false};
}

void FetchPlan::noteTotal(std::int64_t total, std::int64_t own, Moment now) {
    const std::int64_t others = total - own;
    const bool isFirst = !total_;
    const bool isOther = std::exchange(total_, total) != total;
    if (std::exchange(others_, others) != others && !isFirst) {
        noteOthers(now);
    } else if (isOther && others != 0) { // what was sent from here is the smaller part of these lists
        of(Fetch::hours).isStale = of(Fetch::appHours).isStale = true;
    }
}

void FetchPlan::noteOthers(Moment now) {
    busyUntil_ = std::max(busyUntil_, now + busyTime);
    of(Fetch::hours).isStale = of(Fetch::appHours).isStale = true;
    notePastSent();
}

void FetchPlan::notePastSent() {
    of(Fetch::days).mayBeStale = of(Fetch::appDays).mayBeStale = true;
}

void FetchPlan::noteDevices(const std::vector<DeviceInfo>& devices, const std::string& registered,
                            Moment now) {
    std::map<std::string, std::string> seen;
    for (const DeviceInfo& device : devices) {
        seen[device.device_id] = device.last_seen_at;
    }
    if (ownListing_.empty() && std::ranges::count(devices, registered, &DeviceInfo::last_seen_at) == 1) {
        ownListing_ = std::ranges::find(devices, registered, &DeviceInfo::last_seen_at)->device_id;
    }
    const auto before = std::exchange(seen_, seen);
    seen.erase(ownListing_);
    for (const auto& [device, last] : seen) {
        const auto found = before.find(device);
        if (!before.empty() && (found == before.end() || found->second != last)) {
            return noteOthers(now);
        }
    }
}

void FetchPlan::noteNewDay() {
    states_ = {};
    total_.reset();
    others_ = 0;
}

} // namespace fernhollow
