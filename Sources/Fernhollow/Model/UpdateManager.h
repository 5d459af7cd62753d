#pragma once

#include "Model/UpdateState.h"
#include "Support/Observable.h"
#include "Support/TaskScope.h"
#include "Updates/UpdaterController.h"
#include "Updates/UpdaterDelegate.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace fernhollow {

/// Turns the updater's many callbacks into the one state of updates that the program shows.
///
/// It starts the updater and is its delegate. Each callback returns at once; a task of its own makes the
/// change, in the order of the callbacks. An outcome stays until the next check: errors and ends of cycles
/// count only while the state is still "checking". Main thread only.
class UpdateManager : public Observable, private UpdaterDelegate, private UserDriverDelegate {
public:
    explicit UpdateManager(const UpdaterController::Factory& makeController);
    ~UpdateManager() override;
    UpdateManager(const UpdateManager&) = delete;
    UpdateManager& operator=(const UpdateManager&) = delete;

    Published<UpdateState> state{*this};
    Published<bool> canCheckForUpdates{*this};

    /// The version of this build as people read it; "0.0.0" when it is not known.
    static std::string currentVersion();

    /// Begins a check for the person, in the updater's own windows.
    void checkForUpdates();

private:
    void mayPerform(UpdateCheck check) override;
    void didFindValidUpdate(const AppcastItem& item) override;
    void updaterDidNotFindUpdate(const std::string& error) override;
    void didAbortWithError(const std::string& error) override;
    void willDownloadUpdate(const AppcastItem& item) override;
    void didDownloadUpdate(const AppcastItem& item) override;
    void willInstallUpdate(const AppcastItem& item) override;
    void didFinishUpdateCycleFor(UpdateCheck check, const std::optional<std::string>& error) override;
    bool supportsGentleScheduledUpdateReminders() const override { return true; }
    void standardUserDriverWillHandleShowingUpdate(bool handlesShowing, const AppcastItem& item) override;

    void later(std::function<void()> work);
    void followCanCheck();
    bool isChecking() const;
    void finishWithError(const std::string& description);
    void finish();

    TaskScope tasks_;
    std::unique_ptr<UpdaterController> updaterController_; // null only while it is being made
    Observation canCheck_;
};

} // namespace fernhollow
