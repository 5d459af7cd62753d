#include "Endurance/Machine.h"

#include "KeypressCore/DailyCountsStore.h"
#include "KeypressCore/SQLiteConnection.h"
#include "Model/CloudSyncCoordinator.h"
#include "Support/ApplicationIdentity.h"
#include "Support/EventLoop.h"

#include <QCoreApplication>
#include <QDeadlineTimer>

#include <array>
#include <cstdlib>
#include <ctime>
#include <stdexcept>

namespace fernhollow::tests {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr auto longestEnd = 10s;
constexpr std::size_t modelSleepers = 2; // the flush loop and the refresh loop

struct Monitor final : KeyPressMonitor {
    bool start() override { return true; }
    void stop() override {}
};

/// The local day and hour by the C library, which the program does not use for this.
std::pair<std::string, int> localTime(Instant now) {
    const std::time_t seconds = Instant::clock::to_time_t(now);
    std::tm local{};
    ::localtime_r(&seconds, &local);
    std::array<char, 16> day{};
    std::strftime(day.data(), day.size(), "%Y-%m-%d", &local);
    return {day.data(), local.tm_hour};
}

} // namespace

Machine::Machine(int number_, fs::path home, Backend& backend, Instant now)
    : number(number_), home_(std::move(home)), backend_(backend), now_(now) {
    fs::create_directories(home_);
}

Machine::~Machine() {
    if (run_) {
        tearDown();
    }
}

void Machine::enter() {
    disk_.mount();
    ::setenv("HOME", home_.c_str(), 1);
    ::setenv("XDG_DATA_HOME", (home_ / "data").c_str(), 1);
    ::setenv("XDG_CONFIG_HOME", (home_ / "config").c_str(), 1);
    ::setenv("TZ", zone.c_str(), 1);
    ::tzset();
}

void Machine::start(const std::string& email) {
    enter();
    fs::remove(home_ / "fernhollow_debug.log");
    run_ = std::make_unique<Run>(now_ + skew_);
    run_->account =
        std::make_shared<AccountManager>(run_->clock, SupabaseConfig{Backend::urlFor(number), "key"});
    if (!run_->account->email()) {
        await(run_->account->verifyEmail(email));
    }
    email_ = run_->account->email().value();
    const auto makeMonitor = [this](KeyPressMonitor::Handlers handlers) {
        run_->handlers = std::move(handlers);
        return std::make_unique<Monitor>();
    };
    run_->model = AppModel::create(
        {run_->clock, run_->tasks, *run_->account, mark_}, makeMonitor,
        [this](std::shared_ptr<DailyCountsStore> store, AccountManager&, std::string deviceId,
               std::function<void()> onIdentityInUseElsewhere) {
            return makeSync(std::move(store), std::move(deviceId), std::move(onIdentityInUseElsewhere));
        });
    settle();
}

std::shared_ptr<CloudSyncCoordinator> Machine::makeSync(std::shared_ptr<DailyCountsStore> store,
                                                        std::string deviceId,
                                                        std::function<void()> onIdentityInUseElsewhere) {
    device_ = deviceId;
    run_->store = store;
    return std::make_shared<CloudSyncCoordinator>(
        SyncSurroundings{run_->clock, run_->executor, run_->executor, run_->session}, std::move(store),
        *run_->account, std::move(deviceId), SupabaseConfig{Backend::urlFor(number), "key"},
        std::move(onIdentityInUseElsewhere));
}

// Each coroutine of the engine that waits for the clock or a silent backend has one timer, and so has each
// loop of the model. Any other work ends with an event.
void Machine::settle() {
    constexpr int turnsOfQuiet = 3; // requested work begins in the next turn or the one after it
    const QDeadlineTimer deadline(30'000);
    for (int quietTurns = 0; quietTurns < turnsOfQuiet;) {
        run_->tasks.beginWaiting();
        QCoreApplication::sendPostedEvents();
        if (const auto store = run_->store.lock()) {
            store->waitUntilIdle(longestEnd);
        }
        QCoreApplication::sendPostedEvents();
        const bool isQuiet = run_->executor.underWay() + modelSleepers == run_->clock.sleepers();
        quietTurns = isQuiet ? quietTurns + 1 : 0;
        if (!isQuiet) {
            QCoreApplication::processEvents();
        }
        if (deadline.hasExpired()) {
            throw std::runtime_error("machine " + std::to_string(number) +
                                     " does not come to rest: " + std::to_string(run_->session.underWay()) +
                                     " requests, " + std::to_string(run_->executor.underWay()) +
                                     " coroutines, " + std::to_string(run_->clock.sleepers()) + " timers");
        }
    }
    tally().settled(run_->clock.monotonic(), !isDiskFull_);
}

void Machine::tearDown() {
    run_->model->shutDown(longestEnd);
    run_->tasks.stop();
    const std::weak_ptr<AppTracker> tracker = run_->model->appTracker().weak_from_this();
    const std::weak_ptr<AppModel> model = std::exchange(run_->model, nullptr);
    const bool isGone = waitUntil([&] {
        return model.expired() && tracker.expired() && run_->store.expired() &&
               run_->executor.underWay() == 0;
    });
    if (!isGone) {
        throw std::runtime_error("machine " + std::to_string(number) + " does not end");
    }
    run_.reset();
}

void Machine::end() {
    enter();
    tearDown();
    tally().settled(Moment::max(), !isDiskFull_);
}

void Machine::kill() {
    const Network network = backend_.network(number);
    backend_.setNetwork(number, Network::cut);
    disk_.setFrozen(true);
    enter();
    tearDown();
    disk_.setFrozen(false);
    backend_.setNetwork(number, network);
}

void Machine::cutPower() {
    disk_.cutPower();
    kill();
    disk_.restorePower();
}

void Machine::passTo(Instant now, bool isAsleep) {
    now_ = now;
    if (!run_) {
        return;
    }
    const auto gap = std::chrono::floor<std::chrono::milliseconds>(now + skew_ - run_->clock.now());
    if (isAsleep) {
        run_->clock.set(now + skew_);
    } else if (gap > 0ms) {
        pass(gap);
    }
}

void Machine::pass(std::chrono::milliseconds time) {
    enter();
    run_->clock.advance(time);
    settle();
}

void Machine::feed(const std::string& app, std::int64_t count) {
    const auto [day, hour] = localTime(run_->clock.now());
    const bool isOwn = app.empty();
    const std::string id = isOwn ? std::string(applicationIdentifier) : app;
    tally().press(run_->clock.monotonic(), day, hour, app, count);
    run_->handlers.onKeyPress({id, "Name of " + id});
    run_->model->recordKeypresses(count - 1, {id, "Name of " + id});
}

void Machine::press(const std::string& app, std::int64_t count) {
    enter();
    feed(app, count);
    settle();
}

void Machine::beginToPress(std::chrono::milliseconds time, const std::string& app, std::int64_t count) {
    constexpr int turns = 3;
    enter();
    run_->clock.advance(time);
    feed(app, count);
    for (int turn = 0; turn < turns; ++turn) {
        QCoreApplication::processEvents();
    }
}

void Machine::setSkew(std::chrono::seconds skew) {
    skew_ = skew;
    if (run_) {
        run_->clock.set(now_ + skew_);
    }
}

void Machine::setDiskFull(bool isFull) {
    isDiskFull_ = isFull;
    disk_.setFull(isFull);
}

void Machine::signIn(const std::string& email) {
    enter();
    await(run_->account->verifyEmail(email));
    email_ = email;
    settle();
}

void Machine::deleteDatabase() {
    enter();
    for (const char* suffix : {"", "-wal", "-shm"}) {
        fs::remove(DailyCountsStore::urlForAccount(email_).native() + suffix);
    }
    disk_.forget(home_);
}

void Machine::loseSettings() {
    fs::remove_all(home_ / "config");
}

void Machine::copyHomeTo(const fs::path& copy) const {
    fs::remove_all(copy);
    fs::copy(home_, copy, fs::copy_options::recursive);
}

void Machine::replaceHome(const fs::path& copy) {
    fs::remove_all(home_);
    fs::copy(copy, home_, fs::copy_options::recursive);
    disk_.forget(home_);
}

void Machine::retireTallies() {
    for (auto& [key, tally] : tallies) {
        if (!tally.isRetired()) {
            tally.retire(backend_.rows(key.first, key.second));
        }
    }
}

Rows Machine::rows(const std::string& firstDay) {
    constexpr std::array columns = {"day, -1, '', count FROM daily_counts",
                                    "day, hour, '', count FROM hourly_counts",
                                    "day, hour, bundle_id, count FROM app_hour_counts"};
    enter();
    Rows rows;
    const auto file = DailyCountsStore::urlForAccount(email_);
    if (!fs::exists(file)) { // it was deleted, and no key pressed since
        return rows;
    }
    SQLiteConnection connection(file);
    for (std::size_t table = 0; table < columns.size(); ++table) {
        Statement select(connection,
                         ("SELECT " + std::string(columns.at(table)) + " WHERE day >= ?").c_str());
        select.bind(1, firstDay);
        while (select.step()) {
            rows[{static_cast<Table>(table), select.text(0).value(), select.integer(1),
                  select.text(2).value()}] = select.integer64(3);
        }
    }
    return rows;
}

std::string Machine::day() {
    enter();
    return localTime(run_ ? run_->clock.now() : now_ + skew_).first;
}

} // namespace fernhollow::tests
