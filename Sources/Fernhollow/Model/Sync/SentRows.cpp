#include "Model/Sync/SentRows.h"

namespace fernhollow {

void SentRows::load(const DayKey& day, const std::vector<TakenRow>& rows) {
    const auto [found, isNew] = days_.try_emplace(day);
    for (auto row = rows.begin(); isNew && row != rows.end(); ++row) {
        found->second.emplace(Place(row->hour, row->app), row->value);
    }
}

std::optional<std::string> SentRows::value(const TakenRow& row) const {
    const auto day = days_.find(row.day);
    if (day == days_.end()) {
        return std::nullopt;
    }
    const auto found = day->second.find({row.hour, row.app});
    return found != day->second.end() ? std::optional(found->second) : std::nullopt;
}

bool SentRows::claim(const TakenRow& row) {
    if (has(row)) {
        return false;
    }
    days_[row.day][{row.hour, row.app}] = row.value;
    return true;
}

void SentRows::release(const TakenRow& row) {
    if (has(row)) {
        days_[row.day].erase({row.hour, row.app});
    }
}

} // namespace fernhollow
