#include "Model/AccountStore.h"

#include "KeypressCore/DailyCountsStore.h"
#include "KeypressCore/DailyCountsStoreError.h"
#include "KeypressCore/DatabasePlace.h"
#include "Support/DebugLog.h"

#include <filesystem>

namespace fernhollow {
namespace {

std::shared_ptr<DailyCountsStore> open(const std::filesystem::path& url, const DatabaseOpening& opening,
                                       std::string_view today) {
    try {
        return std::make_shared<DailyCountsStore>(url, opening);
    } catch (const DailyCountsStoreError& error) {
        if (!error.isUnreadable()) {
            throw;
        }
        debugLog("[AppModel] Cannot use the database " + url.native() + ": " + error.what());
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
