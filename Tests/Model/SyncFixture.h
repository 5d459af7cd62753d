#pragma once

#include "Model/CloudSyncCoordinator.h"
#include "ModelFixture.h"
#include "Support/EventLoopExecutor.h"
#include "Support/HttpSession.h"
#include "Support/RecordingServer.h"

#include <QThread>

#include <cstdint>

namespace fernhollow::tests {

/// A sync engine with a real store that talks to a recording server, all on the test's thread and clock.
class SyncFixture : public ModelFixture {
protected:
    using Request = RecordingServer::Request;
    using Answer = RecordingServer::Answer;

    SyncFixture() {
        signIn("ana@example.com");
        server_.answer = [this](const Request& request) {
            const auto name = request.path.substr(request.path.rfind('/') + 1);
            const auto found = answers_.find(request.method == "GET" ? "GET" : name);
            return found != answers_.end() ? found->second : Answer{};
        };
    }

    ~SyncFixture() override {
        shutDown();
        coordinator_.reset();
        EXPECT_TRUE(waitUntil([this] { return executor_.underWay() == 0; }));
    }

    void openStore() {
        store_ = std::make_shared<DailyCountsStore>(DailyCountsStore::urlForAccount("ana@example.com"));
    }

    /// From now on the server tells the counts of days that it was sent, or had.
    void serverKeepsDays() {
        server_.answer = [this, answer = server_.answer](const Request& request) {
            if (request.method == "GET") {
                const auto day = QUrlQuery(QString::fromStdString(request.query))
                                     .queryItemValue(QStringLiteral("day"))
                                     .toStdString();
                const auto found = serverDays_.find(day.substr(day.find('.') + 1));
                return found == serverDays_.end()
                           ? Answer{}
                           : Answer{.body = R"([{"count":)" + std::to_string(found->second) + "}]"};
            }
            const Answer given = answer(request);
            if (request.path.ends_with("device_day_counts") && given.status == 200) {
                serverDays_[request.json().at("day")] = request.json().at("count").get<std::int64_t>();
            }
            return given;
        };
    }

    /// A coordinator without a model.
    void startSync() {
        await(store_->writeDurably({}, 1));
        coordinator_ = makeCoordinator(store_);
        settle();
    }

    /// A model that makes its coordinators as the program does.
    void startModel() {
        start([this](std::shared_ptr<DailyCountsStore> store, AccountManager&, std::string,
                     std::function<void()> takeNewIdentity) {
            return makeCoordinator(std::move(store), std::move(takeNewIdentity));
        });
        modelSleepers_ = 2; // the flush loop and the refresh loop
    }

    std::shared_ptr<CloudSyncCoordinator>
    makeCoordinator(std::shared_ptr<DailyCountsStore> store, std::function<void()> takeNewIdentity = [] {}) {
        return std::make_shared<CloudSyncCoordinator>(
            SyncSurroundings{clock_, executor_, executor_, session_}, std::move(store), *account_, deviceId,
            SupabaseConfig{server_.url(), "the.anon.key"},
            [this, takeNewIdentity = std::move(takeNewIdentity)] {
                ++identityNotices_;
                takeNewIdentity();
            });
    }

    /// Lets time pass and what it wakes up come to its end. What a test wrote to its store is on the disk
    /// then.
    void pass(std::chrono::milliseconds time) {
        if (store_) {
            await(store_->writeDurably({}, 1));
        }
        settle();
        clock_.advance(time);
        settle();
    }

    /// Until every coroutine waits for the clock, but for those whose request the server leaves unanswered.
    void settle() {
        tasks_.beginWaiting();
        int quietTurns = 0; // what has only been asked for begins with the next turn or the one after it
        EXPECT_TRUE(waitUntil([&] {
            QCoreApplication::sendPostedEvents();
            const bool isQuiet = session_.underWay() == server_.unanswered() &&
                                 executor_.underWay() + modelSleepers_ == clock_.sleepers();
            if (server_.unanswered() > 0) { // the next request may be on its way to the server
                QThread::msleep(1);
            }
            quietTurns = isQuiet ? quietTurns + 1 : 0;
            return quietTurns > (server_.unanswered() > 0 ? 50 : 2);
        }));
    }

    std::vector<std::int64_t> sentCounts(const std::string& table) {
        std::vector<std::int64_t> counts;
        for (const auto& request : server_.to(table)) {
            if (request.method == "POST") {
                counts.push_back(request.json().at("count").get<std::int64_t>());
            }
        }
        return counts;
    }

    std::int64_t todayTotal() { return await(coordinator_->getAggregatedTodayTotal()); }

    const std::string deviceId = "7D1C3C42-6F0B-4B57-9E37-0D3E5B2B7B11";
    RecordingServer server_;
    std::map<std::string, Answer> answers_; // by table or procedure; "GET" for the select
    EventLoopExecutor executor_;
    HttpSession session_{clock_};
    std::shared_ptr<DailyCountsStore> store_;
    std::shared_ptr<CloudSyncCoordinator> coordinator_;
    std::map<std::string, std::int64_t> serverDays_; // by day, this device's
    int identityNotices_ = 0;
    std::size_t modelSleepers_ = 0;
};

} // namespace fernhollow::tests
