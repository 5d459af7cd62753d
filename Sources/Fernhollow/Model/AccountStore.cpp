#include "Model/AccountStore.h"

#include "KeypressCore/DailyCountsStore.h"
#include "KeypressCore/DailyCountsStoreError.h"
#include "KeypressCore/DatabasePlace.h"
#include "Support/DebugLog.h"

#include <exception>
#include <filesystem>

namespace fernhollow {
namespace {

void migrateLegacyDatabase(const std::string& email) {
    try {
        if (DailyCountsStore::migrateGlobalDataToAccount(email)) {
            debugLog("[AppModel] Migrated legacy global database to account: " + email);
        }
    } catch (const std::exception& error) {
        debugLog(std::string("[AppModel] Migration failed (non-fatal): ") + error.what());
    }
}

std::shared_ptr<DailyCountsStore> open(const std::filesystem::path& url, const DatabaseOpening& opening,
                                       std::string_view today) {
    try {
        return std::make_shared<DailyCountsStore>(url, opening);
    } catch (const DailyCountsStoreError& error) {
        debugLog("[AppModel] Cannot use the database " + url.native() + ": " + error.what());
        if (!error.isUnreadable()) {
            throw;
        }
    }
    setUnreadableAside(url, today);
    return std::make_shared<DailyCountsStore>(url, opening);
}

} // namespace

// Nothing of the file can be shown or sent as it is. Days that the backend knows come back from there.
void setUnreadableAside(const std::filesystem::path& url, std::string_view today) {
    try {
        const auto aside = DatabasePlace::setAside(url, "unreadable-" + std::string(today));
        debugLog("[AppModel] Set the unreadable database aside as " + aside.native());
    } catch (const std::filesystem::filesystem_error& error) {
        debugLog(std::string("[AppModel] Cannot set the unreadable database aside: ") + error.what());
    }
}

std::shared_ptr<DailyCountsStore> openAccountStore(const std::string& email, DatabaseOpening opening,
                                                   std::string_view today) {
    migrateLegacyDatabase(email);
    opening.owner = DailyCountsStore::ownerMark(email);
    try {
        return open(DailyCountsStore::urlForAccount(email), opening, today);
    } catch (const ForeignDatabaseError&) {
        const auto url = DailyCountsStore::longUrlForAccount(email);
        debugLog("[AppModel] Another account has that place; the counts of " + email + " go to " +
                 url.native());
        return open(url, opening, today);
    }
}

} // namespace fernhollow
