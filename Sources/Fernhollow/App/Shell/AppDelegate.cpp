#include "App/Shell/AppDelegate.h"

#include "App/MainWindow/MainWindowController.h"
#include "App/Shell/AppStateHolder.h"
#include "Model/AccountManager.h"
#include "Model/AppModel.h"
#include "Model/UpdateManager.h"
#include "Platform/Desktop.h"
#include "Platform/StatusItem/StatusItem.h"
#include "Presentation/CountsTrouble.h"

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
    connect(&titleUpdate_, &QTimer::timeout, this, [this] {
        if (const auto& model = AppStateHolder::shared().model; model && statusItem_) {
            statusItem_->setTitle(QString::fromStdString(model->menuBarTitle()));
            statusItem_->setNote(countsTrouble(*model));
        }
    });
}

AppDelegate::~AppDelegate() = default;

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
    statusItem_->setTitle(QString::fromStdString(model->menuBarTitle()));
    statusItem_->setNote(countsTrouble(*model));
    connect(statusItem_.get(), &StatusItem::clicked, this, &AppDelegate::statusItemClicked);
    const auto update = [this] { titleUpdate_.start(0); };
    cancellables_.push_back(model->todayCountAggregated.observe(update));
    cancellables_.push_back(model->areCountsSaved.observe(update));
    cancellables_.push_back(model->areCountsSent.observe(update));

    QTimer::singleShot(hostPatience, this, &AppDelegate::openWindowUnlessReachable);
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
