#pragma once

#include "KeypressCore/Calendar.h"
#include "KeypressCore/CountBatch.h"
#include "KeypressCore/Records.h"
#include "Model/RecentDays.h"
#include "Model/Sync/RemoteCaches.h"
#include "Support/Clock.h"
#include "Support/Observable.h"
#include "Support/RepeatedLog.h"

#include <qcorotask.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace fernhollow {

class DailyCountsStore;
class TaskScope;

/// Attributes each press to the application in front and keeps today's totals per hour and application.
///
/// Presses change the published lists at once and wait in a buffer until a flush hands them to the store. A
/// refresh rebuilds the lists from the store and the buffer. Counts that the store could not write go back
/// into the buffer. Presses in this program's own windows are left out. Owned by AppModel; main thread only.
class AppTracker : public Observable, public std::enable_shared_from_this<AppTracker> {
public:
    /// One application's total for today.
    struct AppStats {
        std::string bundleId;
        std::string appName;
        std::int64_t count = 0;
        bool isHidden = false;

        const std::string& id() const { return bundleId; }
        bool operator==(const AppStats&) const = default;
    };

    /// One application's presses in one hour of today.
    struct HourlyAppStats {
        int hour = 0; ///< 0 to 23
        std::string bundleId;
        std::string appName;
        std::int64_t count = 0;

        std::string id() const { return std::to_string(hour) + "-" + bundleId; }
        bool operator==(const HourlyAppStats&) const = default;
    };

    /// One application's presses on one day.
    struct DailyAppStats {
        Instant day; ///< 12:00 of the day
        std::string bundleId;
        std::string appName;
        std::int64_t count = 0;

        std::string id() const;
        bool operator==(const DailyAppStats&) const = default;
    };

    /// Each component from 0 to 1.
    struct Color {
        double red = 0;
        double green = 0;
        double blue = 0;

        bool operator==(const Color&) const = default;
    };

    /// Makes a tracker and starts loading today's counts from `store`, which is null while no account is
    /// signed in.
    static std::shared_ptr<AppTracker> create(const Clock& clock, TaskScope& tasks,
                                              std::shared_ptr<DailyCountsStore> store);

    Published<std::vector<DailyAppStats>> last30DaysAppDaily{*this}; ///< in no order
    Published<std::vector<HourlyAppStats>> todayHourlyByApp{*this};
    Published<std::vector<AppStats>> todayAppTotals{*this}; ///< in descending count
    Published<std::vector<AppRegistryRow>> appRegistry{*this};
    Published<bool> ignoreSelf{*this, true};

    /// The start of the first day for which history is shown.
    static Instant minValidDate(const Clock& clock);

    /// The application's colour, the same on every machine and in every run.
    static Color color(std::string_view bundleId);

    /// Counts one press at `now`.
    void recordKeystroke(const std::string& bundleId, const std::string& appName, Instant now);

    /// Writes the buffer to the store, but not durably. The store has the request when this returns or first
    /// waits.
    QCoro::Task<> flushPending();

    /// Takes the buffer, for a flush that writes it together with the days.
    CountBatch takePending();
    /// Puts counts back into the buffer that a flush could not write.
    void giveBack(const CountBatch& counts);
    bool hasPending() const { return !pending_.isEmpty(); }
    /// The counts that were written since the last flush. They are lost if the database's file is lost.
    const CountBatch& written() const { return written_; }
    CountBatch takeWritten() { return std::exchange(written_, {}); }
    void noteDurable(const CountBatch& counts) { written_.subtract(counts); }

    QCoro::Task<> loadRegistry();
    QCoro::Task<> refreshFromDisk();

    /// Publishes the last 30 days per application: for past days the larger count of the backend and this
    /// machine's store, for today the count here. `remote` is never null.
    QCoro::Task<> updateLast30DaysAppDaily(std::shared_ptr<const AppDailyCache> remote);

    /// What the charts show: the 30 days in the order of days, and today in the order of hours, then
    /// identifiers.
    std::vector<DailyAppStats> getFilteredDailyData() const;
    std::vector<HourlyAppStats> getFilteredHourlyData() const;

    /// Switches to another account's store, or to none, and forgets all counts of the old one.
    void updateStore(std::shared_ptr<DailyCountsStore> store);
    /// Continues with another store of the same account, or without one for a while, and forgets nothing.
    void continueWith(std::shared_ptr<DailyCountsStore> store);

private:
    using CountsByApp = std::unordered_map<std::string, std::int64_t>;
    AppTracker(const Clock& clock, TaskScope& tasks, std::shared_ptr<DailyCountsStore> store);

    static QCoro::Task<> write(std::shared_ptr<AppTracker> self, std::shared_ptr<DailyCountsStore> store,
                               CountBatch counts);
    static QCoro::Task<> load(std::shared_ptr<AppTracker> self);

    /// This machine's totals of the last 29 past days. A day that cannot be read is left out.
    QCoro::Task<AppDailyCache> buildLocalDailyAppTotals(std::shared_ptr<DailyCountsStore> store, Instant now);
    QCoro::Task<> readPastDays(std::shared_ptr<DailyCountsStore> store, Instant now);

    void rolloverIfNeeded(Instant now);
    void updateDisplayData(int hour, const std::string& bundleId, const std::string& appName,
                           std::int64_t delta);
    struct TodayRows {
        std::vector<AppHourlyCountRow> counts;
        std::vector<AppRegistryRow> registry;

        bool operator==(const TodayRows&) const = default;
    };
    struct PastDays {
        std::weak_ptr<DailyCountsStore> store; // expired when the days have to be read again
        Instant lastNoon;                      // today's, when they were read
        std::unordered_map<std::string, CountsByApp> counts;
    };
    void publish(TodayRows rows);
    bool logReceived(const AppDailyCache& remote, const DayKey& todayKey, Instant now);

    const Clock& clock_;
    TaskScope& tasks_;
    std::shared_ptr<DailyCountsStore> store_;
    Calendar calendar_ = Calendar::autoupdatingCurrent();
    CountBatch pending_;       // only applications and their names
    CountBatch written_;       // the same, since the last flush
    Instant pendingSince_;     // of the first press in `pending_`
    bool writesFail_ = false;  // keeps a full disk from filling the log
    std::int64_t flushes_ = 0; // number since the start, to notice one that begins during a wait
    DayKey currentDay_;
    std::optional<TodayRows> shownRows_; // absent once a press or a new day has changed the lists
    RecentDays recentDays_;
    PastDays pastDays_;
    RepeatedLog historyLog_;
    RepeatedLog refreshFailureLog_;
};

} // namespace fernhollow
