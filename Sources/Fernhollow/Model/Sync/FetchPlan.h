#pragma once

#include "Model/DeviceInfo.h"
#include "Support/Clock.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace fernhollow {

/// What the engine asks of the backend.
enum class Fetch {
    total,    ///< of today
    hours,    ///< today's
    appHours, ///< today's, by application
    days,     ///< thirty, today among them
    appDays,  ///< by application
    devices,  ///< of the account
};

/// What is fetched when. A value of one engine.
///
/// Today's total is asked for each second while somebody types, because it shows what another machine sends;
/// the list of devices shows when each of them was there. Everything else is fetched when one of them, or
/// what was sent from here, says that it can have changed, and once in a while to be safe.
class FetchPlan {
public:
    /// A cycle begins. It fetches one of those at most that may have changed, and all that have.
    void begin(Moment now);
    bool isDue(Fetch fetch, Moment now) const;
    /// The backend answered what was asked at `asked`.
    void noteFetched(Fetch fetch, Moment asked);
    std::optional<Moment> fetchedAt(Fetch fetch) const { return of(fetch).fetched; }

    /// A press was counted here.
    void noteActivity(Moment now) { busyUntil_ = now + busyTime; }
    /// The account's total of today, of which `own` was sent from here.
    void noteTotal(std::int64_t total, std::int64_t own, Moment now);
    /// The account's devices. This one is in its row since `registered`, the text of its last registration.
    void noteDevices(const std::vector<DeviceInfo>& devices, const std::string& registered, Moment now);
    /// Something of an earlier day was sent from here.
    void notePastSent();
    /// What is known of today is another day's.
    void noteNewDay();

private:
    struct State {
        std::optional<Moment> fetched;
        bool isStale = true;     // it has changed
        bool mayBeStale = false; // it can have changed
    };

    static constexpr std::chrono::seconds busyTime{30};

    State& of(Fetch fetch) { return states_.at(static_cast<std::size_t>(fetch)); }
    const State& of(Fetch fetch) const { return states_.at(static_cast<std::size_t>(fetch)); }
    bool isOlder(Fetch fetch, std::chrono::milliseconds age, Moment now) const;
    void noteOthers(Moment now);

    std::array<State, 6> states_;
    std::optional<Fetch> spare_; // the one of this cycle that may have changed
    std::size_t nextSpare_ = 0;
    Moment busyUntil_; // somebody types, here or elsewhere
    std::optional<std::int64_t> total_;
    std::int64_t others_ = 0;                 // of the total, as far as not sent from here
    std::map<std::string, std::string> seen_; // by device, as listed
    std::string ownListing_;                  // by what this device is listed
};

} // namespace fernhollow
