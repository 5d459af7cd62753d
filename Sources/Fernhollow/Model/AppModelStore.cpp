// How the model opens the store of the signed-in account, and replaces one that went away.

#include "KeypressCore/DailyCountsStore.h"
#include "Model/AccountStore.h"
#include "Model/AppModel.h"
#include "Support/DebugLog.h"

#include <exception>
#include <filesystem>
#include <utility>

namespace fernhollow {
namespace {

using namespace std::chrono_literals;

// For another process's short transaction at the moment at which a store has to be replaced.
constexpr auto replacingPatience = 500ms;

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

std::string databaseOf(const std::string& email) {
    try {
        return DailyCountsStore::urlForAccount(email).native();
    } catch (const std::filesystem::filesystem_error&) {
        return "of " + email; // its folder is what fails
    }
}

} // namespace

bool AppModel::openStore(std::chrono::milliseconds patience) {
    const std::string email = currentAccountEmail_.value();
    try {
        identity_.claimDatabases();
        migrateLegacyDatabase(email, !openingFailure_.empty());
        store_ = openAccountStore(
            email, {.device = identity_.id(), .completesDays = completesDays_, .patience = patience},
            currentDay_.rawValue);
        completesDays_ = false; // from now on hours are ahead of their day because its flush is due
        openingFailure_.clear();
        areCountsSaved.set(true);
        if (makeSync_) {
            cloudSync_ =
                makeSync_(store_, account_, identity_.id(), [weak = weak_from_this(), id = identity_.id()] {
                    if (const auto self = weak.lock()) {
                        self->takeNewIdentity(id);
                    }
                });
        }
        return true;
    } catch (const std::exception& error) {
        if (openingFailure_ != error.what()) {
            openingFailure_ = error.what();
            debugLog("[AppModel] Cannot use the database " + databaseOf(email));
            debugLog("[AppModel] Failed to create account-specific store: " + openingFailure_);
        }
    }
    areCountsSaved.set(false);
    return false;
}

void AppModel::openMissingStore(std::chrono::milliseconds patience) {
    if (store_ || !currentAccountEmail_ || !openStore(patience)) {
        return;
    }
    debugLog("[AppModel] Initialized with account-specific store for: " + *currentAccountEmail_);
    appTracker_->continueWith(store_);
}

// The sync engine goes with the store: for a new one, a count of the backend that is above this machine's is
// nothing out of the ordinary.
void AppModel::replaceStore(Loss loss) {
    const auto url = store_->url();
    if (loss != Loss::identity) {
        debugLog("[AppModel] The database " + url.native() +
                 (loss == Loss::moved ? " was moved or deleted" : " became unreadable") +
                 "; counting goes on in another one");
    }
    addUnwritten(std::exchange(written_, {})); // it is lost with the file, or would never be sent
    addUnwritten(appTracker_->takeWritten());
    closeStore();
    appTracker_->continueWith(nullptr);
    if (loss == Loss::unreadable) {
        setUnreadableAside(url, currentDay_.rawValue);
    }
    openMissingStore(replacingPatience);
}

void AppModel::takeNewIdentity(const std::string& inUse) {
    if (inUse != identity_.id()) {
        return; // it was reported twice
    }
    identity_.renew();
    if (store_) {
        replaceStore(Loss::identity);
    }
}

void AppModel::closeStore() {
    devicesAsked_.reset();
    if (const auto cloudSync = std::exchange(cloudSync_, nullptr)) {
        cloudSync->reset();
    }
    store_.reset();
}

} // namespace fernhollow
