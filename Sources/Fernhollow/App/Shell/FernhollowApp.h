#pragma once

#include "App/Shell/AppDelegate.h"
#include "App/Shell/Ending.h"
#include "Model/Sync/SyncThread.h"
#include "Platform/EventTap.h"
#include "Platform/Workspace.h"
#include "Support/Clock.h"
#include "Support/TaskScope.h"

#include <memory>
#include <optional>

namespace fernhollow {

class AccountManager;
class AppModel;
class CountingState;
class Desktop;
class UpdateManager;

/// The application entry value: creates the long-lived objects in their order, keeps them for the life
/// of the process and ends them so that no press is lost. Main thread.
class FernhollowApp {
public:
    explicit FernhollowApp(const Desktop& desktop);
    ~FernhollowApp();
    FernhollowApp(const FernhollowApp&) = delete;
    FernhollowApp& operator=(const FernhollowApp&) = delete;

    AppDelegate& delegate() { return appDelegate_; }

    /// Writes what is left, while the program or its session is about to end; logs what could not be written.
    static void flushNow();

    /// Writes what is left, then ends the sync engine; false when the latter takes too long, so that nothing
    /// may be destroyed any more.
    bool end();

private:
    SystemClock clock_;
    TaskScope tasks_;
    SyncThread syncThread_;
    std::shared_ptr<CountingState> counting_;
    std::unique_ptr<EventTapProvider> taps_;
    std::unique_ptr<Workspace> workspace_;
    AppDelegate appDelegate_;
    std::shared_ptr<AccountManager> account_;
    std::shared_ptr<AppModel> model_;
    std::shared_ptr<UpdateManager> updateManager_;
    std::optional<AtExit> atExit_; ///< once all the others are there
};

} // namespace fernhollow
