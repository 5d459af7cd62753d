#pragma once

#include "Platform/Activation.h"
#include "Platform/StatusItem/StatusMenu.h"
#include "Support/Observable.h"

#include <QObject>
#include <QTimer>

#include <memory>
#include <vector>

namespace fernhollow {

class AppModel;
class Desktop;
class StatusItem;

/// What the desktop calls back: the end of launching, clicks on the status item, requests of later
/// starts of the program. Owned by FernhollowApp; main thread only.
class AppDelegate : public QObject {
    Q_OBJECT

public:
    explicit AppDelegate(const Desktop& desktop);
    ~AppDelegate() override;

    void applicationDidFinishLaunching();

    /// Toggles the main window.
    void statusItemClicked(const ActivationToken& token);

    /// Stops or resumes counting, in this run.
    void setPaused(bool paused);

    /// Shows the main window in front, as a second plain start of the program asks.
    void activate(const ActivationToken& token);

private:
    void setupStatusItem();
    void openWindowUnlessReachable();
    void follow(AppModel& model);
    void updateStatusItem();
    StatusMenu makeMenu() const;

    const Desktop& desktop_;
    std::unique_ptr<StatusItem> statusItem_;
    std::vector<Observation> cancellables_;
    QTimer titleUpdate_; // runs once in the next turn of the event loop after any number of changes
    bool isStatusItemSetup_ = false;
};

} // namespace fernhollow
