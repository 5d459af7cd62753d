#include "KeypressCore/DailyCountsStore.h"

#include "KeypressCore/DailyCountsDatabase.h"

#include <utility>

namespace fernhollow {

DailyCountsStore::DailyCountsStore(std::filesystem::path url, const DatabaseOpening& opening)
    : url_(std::move(url)), database_(std::make_shared<DailyCountsDatabase>(url_, opening)) {}

DailyCountsStore::~DailyCountsStore() {
    // The executor's thread closes the database, because closing writes the log back into the file.
    executor_.run([database = std::move(database_)]() mutable { database.reset(); });
}

Future<void> DailyCountsStore::write(CountBatch counts, std::int64_t updatedAt) {
    return executor_.run(
        [db = database_.get(), counts = std::move(counts), updatedAt] { db->write(counts, updatedAt); });
}

Future<void> DailyCountsStore::writeDurably(CountBatch counts, std::int64_t updatedAt) {
    return executor_.run([db = database_.get(), counts = std::move(counts), updatedAt] {
        db->writeDurably(counts, updatedAt);
    });
}

Future<std::vector<HourlyCountRow>> DailyCountsStore::fetchDurableHourlyCounts(DayKey day) {
    return executor_.run(
        [db = database_.get(), day = std::move(day)] { return db->fetchDurableHourlyCounts(day); });
}

Future<std::vector<AppHourlyCountRow>> DailyCountsStore::fetchDurableAppHourlyCounts(DayKey day) {
    return executor_.run(
        [db = database_.get(), day = std::move(day)] { return db->fetchDurableAppHourlyCounts(day); });
}

Future<std::optional<SentCount>> DailyCountsStore::sentCount(DayKey day) {
    return executor_.run([db = database_.get(), day = std::move(day)] { return db->sentCount(day); });
}

Future<void> DailyCountsStore::noteSent(DayKey day, std::int64_t count) {
    return executor_.run([db = database_.get(), day = std::move(day), count] { db->noteSent(day, count); });
}

Future<void> DailyCountsStore::noteTaken(std::vector<TakenRow> rows) {
    return executor_.run([db = database_.get(), rows = std::move(rows)] { db->noteTaken(rows); });
}

Future<std::vector<TakenRow>> DailyCountsStore::taken(DayKey day) {
    return executor_.run([db = database_.get(), day = std::move(day)] { return db->taken(day); });
}

Future<SentCounts::Counts> DailyCountsStore::takenCounts() {
    return executor_.run([db = database_.get()] { return db->takenCounts(); });
}

Future<void> DailyCountsStore::forgetTaken(DayKey from, DayKey to) {
    return executor_.run(
        [db = database_.get(), from = std::move(from), to = std::move(to)] { db->forgetTaken(from, to); });
}

Future<void> DailyCountsStore::forgetTakenHours(DayKey before) {
    return executor_.run(
        [db = database_.get(), before = std::move(before)] { db->forgetTakenHours(before); });
}

Future<void> DailyCountsStore::raise(DayKey day, std::int64_t by, std::int64_t updatedAt) {
    return executor_.run(
        [db = database_.get(), day = std::move(day), by, updatedAt] { db->raise(day, by, updatedAt); });
}

Future<void> DailyCountsStore::increment(DayKey day, std::int64_t by, std::int64_t updatedAt) {
    return executor_.run(
        [db = database_.get(), day = std::move(day), by, updatedAt] { db->increment(day, by, updatedAt); });
}

Future<void> DailyCountsStore::incrementHourly(DayKey day, int hour, std::int64_t by,
                                               std::int64_t updatedAt) {
    return executor_.run([db = database_.get(), day = std::move(day), hour, by, updatedAt] {
        db->incrementHourly(day, hour, by, updatedAt);
    });
}

Future<void> DailyCountsStore::overwrite(DayKey day, std::int64_t count, std::int64_t updatedAt) {
    return executor_.run([db = database_.get(), day = std::move(day), count, updatedAt] {
        db->overwrite(day, count, updatedAt);
    });
}

Future<void> DailyCountsStore::replaceHourly(DayKey day, std::map<int, std::int64_t> counts,
                                             std::int64_t updatedAt) {
    return executor_.run([db = database_.get(), day = std::move(day), counts = std::move(counts), updatedAt] {
        db->replaceHourly(day, counts, updatedAt);
    });
}

Future<std::int64_t> DailyCountsStore::count(DayKey day) {
    return executor_.run([db = database_.get(), day = std::move(day)] { return db->count(day); });
}

Future<std::vector<DailyCountRow>> DailyCountsStore::fetchCounts(DayKey from, DayKey to) {
    return executor_.run([db = database_.get(), from = std::move(from), to = std::move(to)] {
        return db->fetchCounts(from, to);
    });
}

Future<std::vector<HourlyCountRow>> DailyCountsStore::fetchHourlyCounts(DayKey day) {
    return executor_.run([db = database_.get(), day = std::move(day)] { return db->fetchHourlyCounts(day); });
}

Future<void> DailyCountsStore::incrementAppHourly(DayKey day, int hour, std::string bundleId, std::int64_t by,
                                                  std::int64_t updatedAt) {
    return executor_.run([db = database_.get(), day = std::move(day), hour, bundleId = std::move(bundleId),
                          by, updatedAt] { db->incrementAppHourly(day, hour, bundleId, by, updatedAt); });
}

Future<std::vector<AppHourlyCountRow>> DailyCountsStore::fetchAppHourlyCounts(DayKey day) {
    return executor_.run(
        [db = database_.get(), day = std::move(day)] { return db->fetchAppHourlyCounts(day); });
}

Future<std::unordered_map<std::string, std::int64_t>> DailyCountsStore::fetchAppDailyCounts(DayKey day) {
    return executor_.run(
        [db = database_.get(), day = std::move(day)] { return db->fetchAppDailyCounts(day); });
}

Future<void> DailyCountsStore::registerApp(std::string bundleId, std::string appName,
                                           std::int64_t firstSeen) {
    return executor_.run([db = database_.get(), bundleId = std::move(bundleId), appName = std::move(appName),
                          firstSeen] { db->registerApp(bundleId, appName, firstSeen); });
}

Future<std::vector<AppRegistryRow>> DailyCountsStore::fetchAppRegistry() {
    return executor_.run([db = database_.get()] { return db->fetchAppRegistry(); });
}

Future<void> DailyCountsStore::setAppHidden(std::string bundleId, bool isHidden) {
    return executor_.run([db = database_.get(), bundleId = std::move(bundleId), isHidden] {
        db->setAppHidden(bundleId, isHidden);
    });
}

Future<std::optional<std::string>> DailyCountsStore::getAppName(std::string bundleId) {
    return executor_.run(
        [db = database_.get(), bundleId = std::move(bundleId)] { return db->getAppName(bundleId); });
}

void DailyCountsStore::setPatience(std::chrono::milliseconds patience) {
    executor_.run([db = database_.get(), patience] { db->setPatience(patience); });
}

bool DailyCountsStore::waitUntilIdle(std::chrono::milliseconds limit) {
    return executor_.waitUntilIdle(limit);
}

} // namespace fernhollow
