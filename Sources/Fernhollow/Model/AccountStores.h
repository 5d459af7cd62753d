#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>

namespace fernhollow {

class DayKey;
class DailyCountsStore;
class DeviceIdentity;

/// Opens the store of an account, again where an attempt failed, and logs each reason once. A value of the
/// model.
class AccountStores {
public:
    /// The account's store; null while it cannot be opened. Leaves a file alone that belongs to another
    /// account and takes one with a longer name. Sets a file aside that is not a database, under a name with
    /// the day `today`. Waits for another process's lock at most `patience`.
    std::shared_ptr<DailyCountsStore> open(const std::string& email, DeviceIdentity& identity,
                                           std::chrono::milliseconds patience, const DayKey& today);

    /// Another account was signed in, or none. What the change discarded is not brought back by a second one.
    void changeAccount();

    /// Sets a file aside that is not a database, or a damaged one. Logs what becomes of it.
    static void setUnreadableAside(const std::filesystem::path& url, const DayKey& today);

private:
    // Hours that are ahead of their day are a crash's until the first store is open. Afterwards the day's
    // flush is only due.
    bool completesDays_ = true;
    std::string failure_; // the last one that was logged
};

} // namespace fernhollow
