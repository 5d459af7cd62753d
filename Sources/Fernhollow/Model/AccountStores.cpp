#include "Model/AccountStores.h"

#include "KeypressCore/DailyCountsStore.h"
#include "KeypressCore/DailyCountsStoreError.h"
#include "KeypressCore/DatabasePlace.h"
#include "Model/DeviceIdentity.h"
#include "Support/DebugLog.h"

#include <exception>

namespace fernhollow {
namespace {

void migrateLegacyDatabase(const std::string& email, bool isRetry) {
    try {
        if (DailyCountsStore::migrateGlobalDataToAccount(email)) {
            debugLog("[AppModel] Migrated legacy global database to account: " + email);
        }
    } catch (const std::exception& error) {
        if (!isRetry) {
            debugLog(std::string("[AppModel] Migration failed (non-fatal): ") + error.what());
        }
    }
}

std::string describeDatabase(const std::string& email) {
    try {
        return DailyCountsStore::urlForAccount(email).native();
    } catch (const std::filesystem::filesystem_error&) {
        return "of " + email; // its folder is what fails
    }
}

std::shared_ptr<DailyCountsStore> openFile(const std::filesystem::path& url, const DatabaseOpening& opening,
                                           const DayKey& today) {
    try {
        return std::make_shared<DailyCountsStore>(url, opening);
    } catch (const DailyCountsStoreError& error) {
        if (!error.isUnreadable()) {
            throw;
        }
        debugLog("[AppModel] Cannot use the database " + url.native() + ": " + error.what());
    }
    AccountStores::setUnreadableAside(url, today);
    return std::make_shared<DailyCountsStore>(url, opening);
}

std::shared_ptr<DailyCountsStore> openOwnFile(const std::string& email, const DatabaseOpening& opening,
                                              const DayKey& today) {
    try {
        return openFile(DailyCountsStore::urlForAccount(email), opening, today);
    } catch (const ForeignDatabaseError&) {
        const auto url = DailyCountsStore::longUrlForAccount(email);
        debugLog("[AppModel] Another account has the usual file name; the counts of " + email + " go to " +
                 url.native());
        return openFile(url, opening, today);
    }
}

} // namespace

std::shared_ptr<DailyCountsStore> AccountStores::open(const std::string& email, DeviceIdentity& identity,
                                                      std::chrono::milliseconds patience,
                                                      const DayKey& today) {
    try {
        identity.claimDatabases();
        migrateLegacyDatabase(email, !failure_.empty());
        auto store = openOwnFile(email,
                                 {.owner = DailyCountsStore::ownerMark(email),
                                  .device = identity.id(),
                                  .completesDays = completesDays_,
                                  .patience = patience},
                                 today);
        completesDays_ = false;
        failure_.clear();
        return store;
    } catch (const std::exception& error) {
        if (failure_ != error.what()) {
            failure_ = error.what();
            debugLog("[AppModel] Cannot use the database " + describeDatabase(email));
            debugLog("[AppModel] Failed to create account-specific store: " + failure_);
        }
        return nullptr;
    }
}

void AccountStores::changeAccount() {
    completesDays_ = false;
    failure_.clear();
}

// Nothing of the file can be shown or sent as it is. Days that the backend knows come back from there.
void AccountStores::setUnreadableAside(const std::filesystem::path& url, const DayKey& today) {
    try {
        const auto aside = DatabasePlace::setAside(url, "unreadable-" + today.rawValue);
        debugLog("[AppModel] Set the unreadable database aside as " + aside.native());
    } catch (const std::filesystem::filesystem_error& error) {
        debugLog(std::string("[AppModel] Cannot set the unreadable database aside: ") + error.what());
    }
}

} // namespace fernhollow
