#include "App/Shell/AppDelegate.h"

#include "App/MainWindow/MainWindowController.h"
#include "App/Shell/AppStateHolder.h"
#include "App/Shell/CountingState.h"
#include "App/Status/Trouble.h"
#include "Model/AccountManager.h"
#include "Model/AppModel.h"
#include "Model/UpdateManager.h"
#include "Platform/Desktop.h"
#include "Platform/StatusItem/StatusItem.h"

#include <QCoreApplication>

#include <chrono>

namespace fernhollow {
namespace {

using namespace std::chrono_literals;

constexpr auto setupDelay = 100ms;

// Hosts answer within milliseconds; at the start of a session the panel may still be on its way.
constexpr auto hostPatience = 2s;

} // namespace

AppDelegate::AppDelegate(const Desktop& desktop) : desktop_(desktop) {
    titleUpdate_.setSingleShot(true);
    connect(&titleUpdate_, &QTimer::timeout, this, &AppDelegate::updateStatusItem);
}

AppDelegate::~AppDelegate() {
    MainWindowController::shared().visibilityChanged = nullptr;
}

void AppDelegate::applicationDidFinishLaunching() {
    QTimer::singleShot(setupDelay, this, &AppDelegate::setupStatusItem);
}

void AppDelegate::setupStatusItem() {
    if (isStatusItemSetup_) {
        return;
    }
    const auto& model = AppStateHolder::shared().model;
    if (!model) {
        QTimer::singleShot(setupDelay, this, &AppDelegate::setupStatusItem);
        return;
    }
    isStatusItemSetup_ = true;
    statusItem_ = desktop_.makeStatusItem();
    updateStatusItem();
    connect(statusItem_.get(), &StatusItem::clicked, this, &AppDelegate::statusItemClicked);
    // Where the desktop has taken the item away, the window is the only way to the program.
    connect(statusItem_.get(), &StatusItem::dropped, this, [this] { activate({}); });
    follow(*model);
    QTimer::singleShot(hostPatience, this, &AppDelegate::openWindowUnlessReachable);
}

void AppDelegate::follow(AppModel& model) {
    const auto update = [this] { titleUpdate_.start(0); };
    cancellables_.push_back(model.todayCountAggregated.observe(update));
    cancellables_.push_back(model.areCountsSaved.observe(update));
    cancellables_.push_back(model.areCountsSent.observe(update));
    cancellables_.push_back(model.isPaused.observe(update));
    cancellables_.push_back(AppStateHolder::shared().counting->observe(update));
    MainWindowController::shared().visibilityChanged = update;
}

void AppDelegate::updateStatusItem() {
    const auto& holder = AppStateHolder::shared();
    if (!holder.model || !statusItem_) {
        return;
    }
    const Trouble trouble = Trouble::now(holder.model, *holder.counting);
    statusItem_->setTitle(QString::fromStdString(holder.model->menuBarTitle()));
    statusItem_->setNote(trouble.sentence);
    statusItem_->setHalted(trouble.isHalted);
    statusItem_->setMenu(makeMenu());
}

StatusMenu AppDelegate::makeMenu() const {
    const auto model = AppStateHolder::shared().model;
    const bool isVisible = MainWindowController::shared().isVisible();
    const bool isPaused = model->isPaused.get();
    return {
        {isVisible ? QStringLiteral("Hide Window") : QStringLiteral("Show Window"),
         [] {
             const auto& holder = AppStateHolder::shared();
             if (holder.isFilled()) {
                 MainWindowController::shared().toggle(holder, {});
             }
         }},
        {isPaused ? QStringLiteral("Resume Counting") : QStringLiteral("Pause Counting"),
         [model, isPaused] { model->isPaused.set(!isPaused); }},
        {QStringLiteral("Quit"), [] { QCoreApplication::quit(); }},
    };
}

void AppDelegate::setPaused(bool paused) {
    if (const auto& model = AppStateHolder::shared().model) {
        model->isPaused.set(paused);
    }
}

// Without an account, or without a status bar, a person would otherwise see nothing happen.
void AppDelegate::openWindowUnlessReachable() {
    if (MainWindowController::shared().hasBeenShown()) {
        return;
    }
    const auto& account = AppStateHolder::shared().account;
    if (!statusItem_->isShown() || (account && !account->email())) {
        activate({});
    }
}

void AppDelegate::statusItemClicked(const ActivationToken& token) {
    const auto& holder = AppStateHolder::shared();
    if (holder.isFilled()) {
        MainWindowController::shared().toggle(holder, token);
    }
}

void AppDelegate::activate(const ActivationToken& token) {
    const auto& holder = AppStateHolder::shared();
    if (holder.isFilled()) {
        MainWindowController::shared().show(holder, token);
    }
}

} // namespace fernhollow
