#include "App/Updates/StandardUpdaterController.h"

#include "App/Updates/StandardUserDriver.h"
#include "Support/ApplicationIdentity.h"
#include "Support/BundleInfo.h"
#include "Support/UserDirectories.h"
#include "Updates/UpdateConfiguration.h"
#include "Updates/Updater.h"

#include <QCoreApplication>

#include <utility>

namespace fernhollow {
namespace {

// Without a feed there is never anything to notify of, and the bus is not asked for.
QDBusConnection notificationBus(bool hasFeed) {
    return hasFeed ? QDBusConnection::sessionBus() : QDBusConnection(QString());
}

// What is compared may be finer than what people read.
std::string comparedVersion() {
    return BundleInfo::main().string("CFBundleVersion").value_or(std::string(applicationVersion()));
}

std::filesystem::path downloadFolder() {
    return applicationSupportDirectory() / applicationName / "Updates";
}

} // namespace

StandardUpdaterController::StandardUpdaterController(Clock& clock, UpdaterDelegate& delegate,
                                                     UserDriverDelegate& userDriverDelegate) {
    const auto configuration = readUpdateConfiguration();
    driver_ = std::make_shared<StandardUserDriver>(std::string(applicationVersion()),
                                                   notificationBus(configuration.has_value()));
    std::shared_ptr<UpdateInstaller> installer;
    std::shared_ptr<UpdateSource> source;
    if (configuration) {
        installer = makeUpdateInstaller();
        source = makeAppcastSource(clock, *configuration, comparedVersion(), installer->packageType(),
                                   downloadFolder());
    }
    updater_ = std::make_shared<Updater>(std::string(applicationVersion()), configuration,
                                         Updater::Surroundings{.clock = clock,
                                                               .source = std::move(source),
                                                               .installer = std::move(installer),
                                                               .driver = driver_,
                                                               .quit = &QCoreApplication::quit},
                                         delegate, userDriverDelegate);
    driver_->setNotificationChosen([this] { updater_->checkForUpdates(); });
    updater_->start();
}

StandardUpdaterController::~StandardUpdaterController() {
    driver_->setNotificationChosen([] {});
    updater_->stop();
}

void StandardUpdaterController::checkForUpdates() {
    updater_->checkForUpdates();
}

bool StandardUpdaterController::canCheckForUpdates() const {
    return updater_->canCheckForUpdates.get();
}

Observation StandardUpdaterController::observeCanCheckForUpdates(std::function<void()> willChange) {
    return updater_->canCheckForUpdates.observe(std::move(willChange));
}

} // namespace fernhollow
