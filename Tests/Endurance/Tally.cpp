#include "Endurance/Tally.h"

#include <algorithm>
#include <chrono>

namespace fernhollow::tests {
namespace {

using namespace std::chrono_literals;

constexpr auto applicationsInterval = 1s;
constexpr auto flushInterval = 15s;

std::int64_t countAt(const Rows& rows, const Place& place) {
    const auto found = rows.find(place);
    return found != rows.end() ? found->second : 0;
}

} // namespace

void Tally::press(Moment at, const std::string& day, int hour, const std::string& app, std::int64_t count) {
    std::vector<Place> places{{Table::days, day, -1, ""}, {Table::hours, day, hour, ""}};
    if (!app.empty()) {
        places.push_back({Table::applications, day, hour, app});
    }
    for (const Place& place : places) {
        rows_[place].pressed += count;
    }
    fresh_.push_back({at, std::move(places), count});
}

void Tally::settled(Moment now, bool isSaving) {
    for (Fresh& fresh : fresh_) {
        if (!isSaving) {
            fresh.at = now; // these presses wait for the next write
            fresh.risk = Loss::unasked;
        } else {
            fresh.risk = now - fresh.at >= applicationsInterval ? Loss::lastFlush : Loss::lastSecond;
        }
    }
    if (isSaving) {
        std::erase_if(fresh_, [now](const Fresh& fresh) { return now - fresh.at >= flushInterval; });
    }
}

void Tally::allow(Loss daysAndHours, Loss applications) {
    for (const Fresh& fresh : fresh_) {
        for (const Place& place : fresh.places) {
            const Loss loss = place.table == Table::applications ? applications : daysAndHours;
            rows_[place].mayLack += fresh.risk <= loss ? fresh.count : 0;
        }
    }
    fresh_.clear();
}

void Tally::allowLossOfFile(const std::string& firstDay, const Rows& known) {
    fresh_.clear();
    isRetired_ = false;
    for (auto& [place, row] : rows_) {
        if (place.day >= firstDay) {
            row.hasLostFile = true;
            row.lost = row.pressed;
            row.known = place.table == Table::days ? countAt(known, place) : 0;
        }
    }
}

void Tally::retire(const Rows& known) {
    allowLossOfFile("", known); // until the home returns with the presses that were not sent
    isRetired_ = true;
}

std::int64_t Tally::Row::least() const {
    return (hasLostFile ? known + pressed - lost : pressed) - mayLack;
}

std::optional<Difference> Tally::compareRow(const Place& place, const Row& row,
                                            const std::optional<Rows>& local, const Rows& remote,
                                            const Expectation& expectation) const {
    const bool isSynced = expectation.isSynced && (row.wasSent || place.table == Table::days ||
                                                   place.day >= expectation.firstRecentDay);
    const std::int64_t there = countAt(remote, place);
    const std::int64_t least = row.least();
    if (local) {
        const std::int64_t here = countAt(*local, place);
        if (here > row.pressed || here < (row.hasLostFile ? 0 : least)) {
            return Difference{"machine", place, least, row.pressed, here};
        }
        if (isSynced && !row.hasLostFile && here != there) {
            return Difference{"backend", place, here, here, there};
        }
    }
    if (there > row.pressed || (isSynced && there < least)) {
        return Difference{"backend", place, least, row.pressed, there};
    }
    return std::nullopt;
}

std::optional<Difference> Tally::compare(const std::optional<Rows>& local, const Rows& remote,
                                         const Expectation& expectation) {
    for (const Rows* found : {local ? &*local : &remote, &remote}) { // rows that were never pressed
        for (const auto& [place, count] : *found) {
            if (count != 0 && place.day >= expectation.firstDay && !rows_.contains(place)) {
                return Difference{found == &remote ? "backend" : "machine", place, 0, 0, count};
            }
        }
    }
    for (auto& [place, row] : rows_) {
        if (place.day < expectation.firstDay) {
            continue;
        }
        if (auto difference = compareRow(place, row, local, remote, expectation)) {
            return difference;
        }
        if (local && row.mayLack > 0 && !row.hasLostFile) {
            row.pressed = countAt(*local, place); // the count that the faults really left
            row.mayLack = 0;
        }
        row.wasSent |= expectation.isSynced && countAt(remote, place) > 0;
    }
    return std::nullopt;
}

} // namespace fernhollow::tests
