#include "Model/Sync/DayQueue.h"

#include <tuple>
#include <utility>

namespace fernhollow {
namespace {

DayWork both(DayWork one, DayWork other) {
    return {one.count || other.count, one.hours || other.hours, one.apps || other.apps};
}

DayWork without(DayWork work, DayWork parts) {
    return {work.count && !parts.count, work.hours && !parts.hours, work.apps && !parts.apps};
}

} // namespace

void DayQueue::add(const DayKey& day, DayWork work) {
    Entry& entry = entries_[day];
    entry.changed = both(entry.changed, work);
    entry.isPast = false;
}

bool DayQueue::isPast(const DayKey& day) const {
    const auto found = entries_.find(day);
    return found != entries_.end() && found->second.isPast;
}

bool DayQueue::hasChanged(const DayKey& day) const {
    const auto found = entries_.find(day);
    return found != entries_.end() && !found->second.changed.isEmpty();
}

DayWork DayQueue::work(const DayKey& day) const {
    const auto found = entries_.find(day);
    return found != entries_.end() ? found->second.work : DayWork{};
}

void DayQueue::require(const DayKey& day, DayWork parts) {
    Entry& entry = entries_[day];
    entry.work = both(entry.work, parts);
}

void DayQueue::addPast(const DayKey& day, DayWork work) {
    const auto [found, isNew] = entries_.try_emplace(day);
    found->second.work = both(found->second.work, work);
    found->second.isPast |= isNew;
}

std::vector<DayKey> DayQueue::begin(const DayKey& today, std::size_t portion) {
    std::multimap<std::tuple<bool, int, bool>, DayKey> order; // by what goes first; equal ones as they come
    for (auto newest = entries_.rbegin(); newest != entries_.rend(); ++newest) {
        auto& [day, entry] = *newest;
        entry.work = both(entry.work, std::exchange(entry.changed, {}));
        const bool isPortioned = entry.isPast && entry.losses == 0 && day != today;
        if (!isPortioned || portion > 0) {
            portion -= isPortioned ? 1 : 0;
            order.emplace(std::tuple(day != today, entry.losses, entry.isPast), day);
        }
    }
    std::vector<DayKey> days;
    for (const auto& [rank, day] : order) {
        days.push_back(day);
    }
    return days;
}

void DayQueue::done(const DayKey& day, DayWork parts) {
    const auto found = entries_.find(day);
    if (found == entries_.end()) {
        return;
    }
    Entry& entry = found->second;
    entry.work = without(entry.work, parts);
    if (entry.work.isEmpty()) {
        entry.losses = 0;
        entry.lostSince.reset();
        if (entry.changed.isEmpty()) {
            entries_.erase(found);
        }
    }
}

void DayQueue::lost(const DayKey& day, Moment since) {
    if (const auto found = entries_.find(day); found != entries_.end()) {
        ++found->second.losses;
        found->second.lostSince = found->second.lostSince.value_or(since);
    }
}

std::optional<Moment> DayQueue::lostSince() const {
    std::optional<Moment> first;
    for (const auto& [day, entry] : entries_) {
        if (entry.lostSince && (!first || *entry.lostSince < *first)) {
            first = entry.lostSince;
        }
    }
    return first;
}

} // namespace fernhollow
