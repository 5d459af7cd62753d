// What the engine reads from the backend, and the caches that hold it.

#include "Model/Sync/LoggedText.h"
#include "Model/Sync/SyncEngine.h"
#include "Support/EventLoopExecutor.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <utility>

namespace fernhollow {
namespace {

constexpr std::size_t appDailyLogLength = 500;
// A cycle fetches them each minute at least.
constexpr std::chrono::seconds devicesKnown{90};

constexpr int firstFailure = 400; // of the statuses for which the device list gives up

} // namespace

// The day may have ended while the answer was on its way. The total is not today's then.
QCoro::Task<> SyncEngine::downloadTotals(Self self, Shared session) {
    const DayKey day = self->today();
    const Moment asked = self->surroundings_.clock.monotonic();
    if (!self->fetches_.isDue(Fetch::total, asked)) {
        co_return;
    }
    const auto answer = co_await send(self, session, session->requests.todayTotal(session->email, day),
                                      "Error downloading totals");
    if (!answer || !answer->isSuccess() || day != self->today()) {
        co_return;
    }
    if (const auto total = wire::decodeTotal(answer->body)) {
        self->remoteTodayTotal_ = *total;
        self->fetches_.noteFetched(Fetch::total, asked);
        self->fetches_.noteTotal(*total, self->takenCount(day).value_or(0), asked);
        self->log_.writeChange("totals", "Downloaded today total: " + std::to_string(*total));
    }
}

QCoro::Task<> SyncEngine::downloadHistory(Self self, Shared session) {
    const Moment asked = self->surroundings_.clock.monotonic();
    if (!self->fetches_.isDue(Fetch::days, asked)) {
        co_return;
    }
    const auto taken = co_await self->takenCounts(); // what is taken meanwhile need not be in the answer
    const auto answer =
        co_await send(self, session, session->requests.dailyTotals(session->email, self->today()),
                      "Error downloading history");
    if (!answer || !answer->isSuccess()) {
        co_return;
    }
    const auto rows = wire::decodeDaily(answer->body);
    if (!rows) {
        self->log_.writeChange("history", "Failed to decode history. Response: " +
                                              loggedText(answer->body).value_or(""));
        co_return;
    }
    self->remoteHistory_ = std::make_shared<HistoryCache>(historyCache(*rows));
    self->fetches_.noteFetched(Fetch::days, asked);
    self->log_.writeChange("history", "Downloaded history: " + std::to_string(rows->size()) + " days");
    if (self->isLacking(*self->remoteHistory_, taken)) {
        co_await sendAllAgain(self);
    }
}

QCoro::Task<> SyncEngine::downloadHourly(Self self, Shared session) {
    const DayKey day = self->today();
    const Moment asked = self->surroundings_.clock.monotonic();
    if (!self->fetches_.isDue(Fetch::hours, asked)) {
        co_return;
    }
    const auto answer = co_await send(self, session, session->requests.hourlyTotals(session->email, day),
                                      "Error downloading hourly");
    if (!answer || !answer->isSuccess() || day != self->today()) {
        co_return;
    }
    const auto rows = wire::decodeHours(answer->body);
    if (!rows) {
        self->log_.writeChange("hourly",
                               "Failed to decode hourly. Response: " + loggedText(answer->body).value_or(""));
        co_return;
    }
    self->remoteHourly_ = std::make_shared<HourlyCache>(hourlyCache(*rows));
    self->fetches_.noteFetched(Fetch::hours, asked);
    self->log_.writeChange("hourly", "Downloaded hourly: " + std::to_string(rows->size()) + " hours");
}

QCoro::Task<> SyncEngine::downloadAppHourly(Self self, Shared session) {
    const DayKey day = self->today();
    const Moment asked = self->surroundings_.clock.monotonic();
    if (!self->fetches_.isDue(Fetch::appHours, asked)) {
        co_return;
    }
    const auto answer = co_await send(self, session, session->requests.appHourlyTotals(session->email, day),
                                      "Error downloading app hourly");
    if (!answer || !answer->isSuccess() || day != self->today()) {
        co_return;
    }
    if (const auto rows = wire::decodeAppHours(answer->body)) {
        self->remoteAppHourly_ = std::make_shared<AppHourlyCache>(appHourlyCache(*rows));
        self->fetches_.noteFetched(Fetch::appHours, asked);
        self->log_.writeChange("app hourly",
                               "Downloaded app hourly: " + std::to_string(rows->size()) + " entries");
    }
}

QCoro::Task<> SyncEngine::downloadAppDaily(Self self, Shared session) {
    const Moment asked = self->surroundings_.clock.monotonic();
    if (!self->fetches_.isDue(Fetch::appDays, asked)) {
        co_return;
    }
    const auto answer =
        co_await send(self, session, session->requests.appDailyTotals(session->email, self->today()),
                      "Error downloading app daily");
    if (!answer) {
        co_return;
    }
    self->log_.writeChange("app daily status",
                           "downloadAppDaily HTTP status: " + std::to_string(answer->status));
    if (!answer->isSuccess()) {
        self->log_.writeChange("app daily",
                               "downloadAppDaily failed with status " + std::to_string(answer->status) +
                                   ": " + loggedText(answer->body, appDailyLogLength).value_or("no body"));
        co_return;
    }
    const auto rows = wire::decodeAppDaily(answer->body);
    if (!rows) {
        self->log_.writeChange("app daily",
                               "Failed to decode app daily. Response: " +
                                   loggedText(answer->body, appDailyLogLength).value_or("no body"));
        co_return;
    }
    self->remoteAppDaily_ = std::make_shared<AppDailyCache>(appDailyCache(*rows));
    self->fetches_.noteFetched(Fetch::appDays, asked);
    self->logAppDaily(rows->size());
}

void SyncEngine::logAppDaily(std::size_t rows) {
    std::set<std::string_view> days;
    std::set<std::string_view> apps;
    for (const auto& [day, counts] : *remoteAppDaily_) {
        days.insert(day);
        for (const auto& [bundleId, count] : counts) {
            apps.insert(bundleId);
        }
    }
    log_.writeChange("app daily", "Downloaded app daily: " + std::to_string(rows) + " entries, " +
                                      std::to_string(days.size()) + " days, " + std::to_string(apps.size()) +
                                      " unique apps");
    if (!days.empty()) {
        log_.writeChange("app daily range", "App daily date range: " + std::string(*days.begin()) + " to " +
                                                std::string(*days.rbegin()));
    }
}

QCoro::Task<std::vector<DeviceInfo>> SyncEngine::getConnectedDevices() {
    if (!config_) {
        co_return {};
    }
    const auto self = shared_from_this();
    const auto stop = stop_.get_token();
    if (!co_await isSignedIn() || stop.stop_requested()) {
        co_return {};
    }
    const Moment now = surroundings_.clock.monotonic();
    const auto fetched = fetches_.fetchedAt(Fetch::devices);
    if (fetched && now - *fetched < devicesKnown) {
        co_return devices_;
    }
    if (backOff_.remaining(now) > std::chrono::milliseconds(0)) {
        co_return devices_; // the backend wants to be left alone
    }
    const auto session = makeSession();
    auto devices = co_await fetchDevices(self, session);
    if (session->wantedPause()) {
        backOff(*session);
    }
    co_return std::move(devices);
}

QCoro::Task<std::vector<DeviceInfo>> SyncEngine::fetchDevices(Self self, Shared session) {
    self->devices_.clear();
    const Moment asked = self->surroundings_.clock.monotonic();
    const auto answer =
        co_await send(self, session, session->requests.devices(session->email), "Error fetching devices");
    if (!answer) {
        co_return {};
    }
    self->log_.writeChange("devices status", "Get devices response: " + std::to_string(answer->status));
    if (answer->status >= firstFailure) {
        self->log_.writeChange("devices",
                               "Get devices error: " + loggedText(answer->body).value_or("no body"));
        co_return {};
    }
    auto devices = wire::decodeDevices(answer->body);
    if (!devices) {
        self->log_.writeChange("devices",
                               "Failed to decode devices: " + loggedText(answer->body).value_or("no body"));
        co_return {};
    }
    self->log_.writeChange("devices", "Found " + std::to_string(devices->size()) + " connected devices");
    self->devices_ = *devices;
    self->fetches_.noteFetched(Fetch::devices, asked);
    self->fetches_.noteDevices(*devices, self->registeredAs_, asked);
    co_return std::move(*devices);
}

void SyncEngine::resetTodayCaches() {
    const DayKey day = today();
    if (day == cachedDay_) {
        return;
    }
    SyncLog::write("Day changed from " + cachedDay_.rawValue + " to " + day.rawValue +
                   ", resetting today caches");
    clearTodayCaches();
}

void SyncEngine::forceResetTodayCaches() {
    SyncLog::write("Force resetting today caches");
    clearTodayCaches();
}

void SyncEngine::clearTodayCaches() {
    remoteTodayTotal_ = 0;
    remoteHourly_ = std::make_shared<HourlyCache>();
    remoteAppHourly_ = std::make_shared<AppHourlyCache>();
    cachedDay_ = today();
    fetches_.noteNewDay();
}

} // namespace fernhollow
