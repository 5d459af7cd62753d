#pragma once

#include "KeypressCore/DailyCountsStore.h"
#include "KeypressCore/SQLiteConnection.h"
#include "Model/AccountManager.h"
#include "Model/AppModel.h"
#include "Support/FakeUpdaterController.h"
#include "Support/TaskScope.h"
#include "Support/Testing.h"

#include <cstdint>
#include <memory>
#include <optional>

namespace fernhollow::tests {

/// A keyboard that a test presses.
struct FakeMonitor final : KeyPressMonitor {
    bool start() override {
        ++starts;
        return isRunning = isAllowed;
    }
    void stop() override { isRunning = false; }

    Handlers handlers;
    bool isAllowed = true;
    bool isRunning = false;
    int starts = 0;
};

/// Another program's connection to the database of ana@example.com. Its transaction ends with it.
struct OtherConnection : SQLiteConnection {
    explicit OtherConnection(const char* sql = "BEGIN IMMEDIATE")
        : SQLiteConnection(DailyCountsStore::urlForAccount("ana@example.com")) {
        exec(sql);
    }
};

/// A model with real stores in a temporary home, a clock that a test moves and a keyboard that it presses.
class ModelFixture : public testing::Test {
protected:
    ~ModelFixture() override { shutDown(); }

    void signIn(const std::string& email) { await(account_->verifyEmail(email)); }

    void start(CloudSyncCoordinator::Factory makeSync = {}) {
        const auto makeMonitor = [this](KeyPressMonitor::Handlers handlers) {
            auto monitor = std::make_unique<FakeMonitor>();
            monitor->isAllowed = isMonitorAllowed_;
            monitor->handlers = std::move(handlers);
            monitor_ = monitor.get();
            return monitor;
        };
        model_ = AppModel::create({clock_, tasks_, *account_, machine_}, makeMonitor, std::move(makeSync));
        tasks_.beginWaiting();
    }

    void shutDown() {
        if (model_) {
            model_->shutDown(std::chrono::seconds(10));
            tasks_.stop();
            // What is still under way, for an account that was left, ends before what it stands on.
            const std::weak_ptr<AppTracker> tracker = model_->appTracker().weak_from_this();
            const std::weak_ptr<AppModel> model = std::exchange(model_, nullptr);
            EXPECT_TRUE(waitUntil([&] { return model.expired() && tracker.expired(); }));
            std::destroy_at(&tasks_); // a stopped scope begins nothing more; the next model needs another one
            std::construct_at(&tasks_);
        }
    }

    void press(std::int64_t times, const std::string& app = "org.a") {
        for (std::int64_t i = 0; i < times; ++i) {
            monitor_->handlers.onKeyPress({app, "Name of " + app});
        }
    }

    // The store works in the order in which it is asked, so that what was on its way before is done after.
    void flush() {
        tasks_.beginWaiting();
        await(model_->flushPending());
    }

    void refresh() {
        tasks_.beginWaiting();
        await(model_->refreshFromDisk());
    }

    std::int64_t storedCount(const DayKey& day, const std::string& email = "ana@example.com") {
        DailyCountsStore store(DailyCountsStore::urlForAccount(email));
        return await(store.count(day));
    }

    std::vector<HourlyCountRow> storedHours(const DayKey& day, const std::string& email = "ana@example.com") {
        DailyCountsStore store(DailyCountsStore::urlForAccount(email));
        return await(store.fetchHourlyCounts(day));
    }

    const DayKey today{"2026-03-05"};
    const DayKey tomorrow{"2026-03-06"};
    TemporaryHome home_;
    EnvironmentGuard zone_{"TZ", "UTC"};
    EnvironmentGuard locale_{"LC_ALL", "en_US.UTF-8"};
    FakeClock clock_{at("UTC", {.year = 2026, .month = 3, .day = 5, .hour = 9})};
    TaskScope tasks_;
    FakelyUpdated updates_;
    std::shared_ptr<AccountManager> account_ =
        std::make_shared<AccountManager>(clock_, SupabaseConfig{"http://x", "key"});
    bool isMonitorAllowed_ = true;
    std::string machine_ = "this machine";
    FakeMonitor* monitor_ = nullptr;
    std::shared_ptr<AppModel> model_;
};

} // namespace fernhollow::tests
