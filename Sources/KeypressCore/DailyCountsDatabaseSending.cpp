// The operations about the backend: which counts were sent there, and which are added from there.

#include "KeypressCore/DailyCountsDatabase.h"

#include <algorithm>
#include <string>

namespace fernhollow {

void DailyCountsDatabase::followCopies(const DatabaseOpening& opening, const std::filesystem::path& file) {
    sent_.emplace(file, opening.device);
    endRaise();
    const auto before = allCounts();
    const auto rolledBack = sent_->rolledBack(before);
    for (const DayKey& day : rolledBack) {
        std::int64_t raised = before.contains(day) ? before.at(day) : 0;
        for (const auto& row : fetchHourlyCounts(day)) {
            raised -= row.count;
        }
        sent_->noteRaised(day, std::max<std::int64_t>(raised, 0));
    }
    if (opening.completesDays) {
        completeDays();
    }
    sent_->settle(allCounts(), rolledBack);
}

SentCounts::Counts DailyCountsDatabase::allCounts() {
    SentCounts::Counts counts;
    Statement select(connection_, "SELECT day, count FROM daily_counts;");
    while (select.step()) {
        counts[DayKey(select.text(0).value_or(""))] = select.integer64(1);
    }
    return counts;
}

int DailyCountsDatabase::mark() {
    Statement select(connection_, "PRAGMA user_version;");
    return select.step() ? select.integer(0) : 0;
}

void DailyCountsDatabase::endRaise() {
    sent_->endRaise(mark());
    isRaising_ = false;
}

std::optional<SentCount> DailyCountsDatabase::sentCount(const DayKey& day) {
    if (isRaising_) {
        endRaise(); // the raise failed after it was announced
    }
    return sent_ ? sent_->of(day) : std::nullopt;
}

void DailyCountsDatabase::noteSent(const DayKey& day, std::int64_t count) {
    if (sent_) {
        sent_->note(day, count);
    }
}

void DailyCountsDatabase::noteTaken(const std::vector<TakenRow>& rows) {
    if (sent_) {
        sent_->noteTaken(rows);
    }
}

std::vector<TakenRow> DailyCountsDatabase::taken(const DayKey& day) {
    return sent_ ? sent_->taken(day) : std::vector<TakenRow>{};
}

SentCounts::Counts DailyCountsDatabase::takenCounts() {
    return sent_ ? sent_->takenCounts() : SentCounts::Counts{};
}

void DailyCountsDatabase::forgetTaken(const DayKey& from, const DayKey& to) {
    if (sent_) {
        sent_->forgetTaken(from, to);
    }
}

void DailyCountsDatabase::forgetTakenHours(const DayKey& before) {
    if (sent_) {
        sent_->forgetTakenHours(before);
    }
}

void DailyCountsDatabase::raise(const DayKey& day, std::int64_t by, std::int64_t updatedAt) {
    const CountBatch counts{.days = {{day, by}}, .hours = {}, .applications = {}, .names = {}};
    if (!sent_) {
        writeDurably(counts, updatedAt);
        return;
    }
    const int next = sent_->announceRaise(day, by, mark());
    isRaising_ = true;
    {
        const DurableCommits durable(connection_);
        Transaction transaction(connection_);
        add(counts, updatedAt);
        connection_.exec(("PRAGMA user_version=" + std::to_string(next) + ";").c_str());
        transaction.commit();
    }
    endRaise();
}

} // namespace fernhollow
