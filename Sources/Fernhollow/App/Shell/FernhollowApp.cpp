#include "App/Shell/FernhollowApp.h"

#include "App/DayDetail/DayDetailWindowController.h"
#include "App/MainWindow/MainWindowController.h"
#include "App/Shell/AppStateHolder.h"
#include "App/Shell/CountingState.h"
#include "App/Shell/KeyboardMonitor.h"
#include "App/Shell/TrustPrompt.h"
#include "App/Updates/StandardUpdaterController.h"
#include "Model/AccountManager.h"
#include "Model/AppModel.h"
#include "Model/UpdateManager.h"
#include "Platform/Desktop.h"
#include "Support/DebugLog.h"

#include <QGuiApplication>

#include <cstdlib>

namespace fernhollow {
namespace {

using namespace std::chrono_literals;

// A session manager kills what has not ended after some seconds.
constexpr auto lastFlushLimit = 3s;

// Nothing is lost when it takes longer: what was not sent is sent at the next start.
constexpr auto syncEndLimit = 1s;

void logUnless(bool isWritten) {
    if (!isWritten) {
        debugLog("[FernhollowApp] The last presses could not be written in time");
    }
}

} // namespace

FernhollowApp::FernhollowApp(const Desktop& desktop)
    : syncThread_(clock_), counting_(std::make_shared<CountingState>()),
      taps_(desktop.makeEventTapProvider([this](const TrustProblem& problem) {
          counting_->setProblem(problem);
          showTrustPrompt(problem);
      })),
      workspace_(desktop.makeWorkspace()), appDelegate_(desktop),
      account_(std::make_shared<AccountManager>(clock_)),
      model_(AppModel::create(
          {clock_, tasks_, *account_},
          [this](KeyPressMonitor::Handlers handlers) {
              return std::make_unique<KeyboardMonitor>(
                  KeyboardMonitor::Sources{*taps_, *workspace_, clock_, counting_.get()},
                  std::move(handlers));
          },
          [this](std::shared_ptr<DailyCountsStore> store, AccountManager& account, std::string deviceId,
                 std::function<void()> onIdentityInUseElsewhere) {
              return std::make_shared<CloudSyncCoordinator>(
                  syncThread_.surroundings(), std::move(store), account, std::move(deviceId),
                  SupabaseConfig::compiledIn(), std::move(onIdentityInUseElsewhere));
          })),
      updateManager_(std::make_shared<UpdateManager>(
          [this](UpdaterDelegate& delegate, UserDriverDelegate& userDriverDelegate) {
              return std::make_unique<StandardUpdaterController>(clock_, delegate, userDriverDelegate);
          })) {
    AppStateHolder::shared() = {model_, account_, updateManager_, counting_, &clock_};

    QObject::connect(qGuiApp, &QGuiApplication::commitDataRequest, &appDelegate_, flushNow);
    atExit_.emplace([this] { end(); });
}

void FernhollowApp::flushNow() {
    if (const auto& model = AppStateHolder::shared().model) {
        logUnless(model->flushNow(lastFlushLimit));
    }
}

bool FernhollowApp::end() {
    logUnless(model_->shutDown(lastFlushLimit));
    if (syncThread_.finish(syncEndLimit)) {
        return true;
    }
    debugLog("[FernhollowApp] The sync engine did not end in time");
    return false;
}

FernhollowApp::~FernhollowApp() {
    atExit_.reset();
    if (!end()) {
        leave(EXIT_SUCCESS);
    }
    tasks_.stop();
    AppStateHolder::shared() = {};
    DayDetailWindowController::shared().close();
    MainWindowController::shared().close();
}

} // namespace fernhollow
