#include "Model/UpdateManager.h"

#include "Support/BundleInfo.h"
#include "Support/DebugLog.h"

#include <string_view>
#include <utility>

namespace fernhollow {
namespace {

void log(std::string_view message) {
    debugLog(std::string("[Sparkle] ").append(message));
}

} // namespace

UpdateManager::UpdateManager(const UpdaterController::Factory& makeController) {
    updaterController_ = makeController(*this, *this);
    canCheck_ = updaterController_->observeCanCheckForUpdates([this] { followCanCheck(); });
    followCanCheck();
}

UpdateManager::~UpdateManager() {
    updaterController_.reset(); // it makes no more calls to this delegate
}

std::string UpdateManager::currentVersion() {
    return BundleInfo::main().string("CFBundleShortVersionString").value_or("0.0.0");
}

void UpdateManager::checkForUpdates() {
    state.set(UpdateChecking{});
    updaterController_->checkForUpdates();
}

void UpdateManager::later(std::function<void()> work) {
    tasks_.start([work = std::move(work)] {
        work();
        return noTask();
    });
}

// Done later, because observers are called before the change.
void UpdateManager::followCanCheck() {
    later([this] { canCheckForUpdates.set(updaterController_->canCheckForUpdates()); });
}

bool UpdateManager::isChecking() const {
    return std::holds_alternative<UpdateChecking>(state.get());
}

void UpdateManager::mayPerform(UpdateCheck /*check*/) {
    later([this] {
        state.set(UpdateChecking{});
        log("Starting update check...");
    });
}

void UpdateManager::didFindValidUpdate(const AppcastItem& item) {
    later([this, version = item.displayVersion] {
        state.set(UpdateAvailable{version});
        log("Update found: " + version);
    });
}

void UpdateManager::updaterDidNotFindUpdate(const std::string& error) {
    later([this, error] {
        state.set(UpdateUpToDate{});
        log("No update available (current: v" + currentVersion() + "), reason: " + error);
    });
}

void UpdateManager::didAbortWithError(const std::string& error) {
    later([this, error] {
        if (!isChecking()) {
            log("Abort error ignored (state: " + describe(state.get()) + "): " + error);
            return;
        }
        state.set(UpdateFailed{error});
        log("Error: " + error);
    });
}

void UpdateManager::willDownloadUpdate(const AppcastItem& /*item*/) {
    later([this] {
        state.set(UpdateDownloading{0});
        log("Downloading update...");
    });
}

void UpdateManager::didDownloadUpdate(const AppcastItem& /*item*/) {
    later([this] {
        state.set(UpdateReadyToInstall{});
        log("Download complete, ready to install");
    });
}

void UpdateManager::willInstallUpdate(const AppcastItem& /*item*/) {
    later([] { log("Installing update..."); });
}

void UpdateManager::didFinishUpdateCycleFor(UpdateCheck /*check*/, const std::optional<std::string>& error) {
    later([this, error] {
        if (error) {
            finishWithError(*error);
        } else {
            finish();
        }
    });
}

void UpdateManager::finishWithError(const std::string& description) {
    if (!isChecking()) {
        log("Update cycle error ignored (state already set): " + description);
        return;
    }
    state.set(UpdateFailed{description});
    log("Update cycle finished with error: " + description);
}

void UpdateManager::finish() {
    if (isChecking()) {
        state.set(UpdateIdle{});
        log("Update cycle finished, state reset to idle");
    }
}

void UpdateManager::standardUserDriverWillHandleShowingUpdate(bool /*handlesShowing*/,
                                                              const AppcastItem& item) {
    later([version = item.displayVersion] { log("Will show update UI for " + version); });
}

} // namespace fernhollow
