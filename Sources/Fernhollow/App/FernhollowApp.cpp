#include "App/FernhollowApp.h"

#include "App/AppStateHolder.h"
#include "App/KeyboardMonitor.h"
#include "App/MainWindowController.h"
#include "App/TrustPrompt.h"
#include "Model/AccountManager.h"
#include "Model/AppModel.h"
#include "Support/DebugLog.h"

#include <QCoreApplication>
#include <QGuiApplication>

#include <cstdlib>

namespace fernhollow {
namespace {

using namespace std::chrono_literals;

// A session manager kills what has not ended after some seconds.
constexpr auto lastFlushLimit = 3s;

bool flush(AppModel& model) {
    const bool isWritten = model.flushNow(lastFlushLimit);
    if (!isWritten) {
        debugLog("[FernhollowApp] The last presses could not be written in time");
    }
    return isWritten;
}

void flushNow() {
    if (const auto& model = AppStateHolder::shared().model) {
        flush(*model);
    }
}

} // namespace

FernhollowApp::FernhollowApp()
    : taps_(makeEventTapProvider(showTrustPrompt)), workspace_(makeWorkspace()),
      account_(std::make_shared<AccountManager>(clock_)),
      model_(AppModel::create({clock_, tasks_, *account_}, [this](KeyPressMonitor::Handlers handlers) {
          return std::make_unique<KeyboardMonitor>(KeyboardMonitor::Desktop{*taps_, *workspace_, clock_},
                                                   std::move(handlers));
      })) {
    AppStateHolder::shared() = {model_, account_};

    QObject::connect(qGuiApp, &QGuiApplication::commitDataRequest, &appDelegate_, flushNow);
    // The toolkit calls exit() when the display goes away, which is how many sessions end.
    std::atexit(flushNow);
}

FernhollowApp::~FernhollowApp() {
    model_->shutDown();
    // A task under way waits for the store some few times; each turn ends one such wait.
    for (int turn = 0; turn < 8 && flush(*model_); ++turn) {
        QCoreApplication::sendPostedEvents();
    }
    tasks_.stop();
    AppStateHolder::shared() = {};
    MainWindowController::shared().close();
}

} // namespace fernhollow
