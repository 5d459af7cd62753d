#pragma once

#include "Platform/Activation.h"
#include "Updates/UserDriver.h"

#include <QDBusConnection>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace fernhollow {

class UpdateNotification;
class UpdateWindow;
struct UpdatePage;

/// The updater's standard windows: one window whose page follows the updater, and for a release that a
/// scheduled check found a notification of the desktop, at most one for each version. Main thread only.
class StandardUserDriver final : public UserDriver {
public:
    StandardUserDriver(std::string currentVersion, const QDBusConnection& bus);
    ~StandardUserDriver() override;

    /// Called when the person chooses the notification.
    void setNotificationChosen(std::function<void()> chosen) { notificationChosen_ = std::move(chosen); }

    QCoro::Task<std::optional<bool>> askPermission() override;
    void showChecking(std::function<void()> cancel) override;
    QCoro::Task<UpdateChoice> showUpdateFound(AppcastItem item, bool canInstall, bool isGentle) override;
    void showDownloading(AppcastItem item, std::function<void()> cancel) override;
    void showProgress(std::uint64_t received, std::uint64_t expected) override;
    QCoro::Task<UpdateChoice> showReadyToInstall(AppcastItem item) override;
    void showInstalling(AppcastItem item) override;
    void showUpToDate(std::string currentVersion) override;
    void showError(std::string description) override;
    void showNote(std::string text) override;
    void focus() override;
    void dismiss() override;

private:
    /// What becomes of the window when its page changes.
    enum class Showing { inFront, quietly, asItIs };

    void present(UpdatePage page, Showing showing, std::function<void()> answerUnanswered = {});
    void answerOpenQuestion();
    void hide();
    void announce(const std::string& version, const std::string& displayVersion);

    std::string currentVersion_;
    QDBusConnection bus_;
    std::function<void()> notificationChosen_;
    ActivationToken activationToken_; // while what the notification asked for comes up
    std::unique_ptr<UpdateWindow> window_;
    std::unique_ptr<UpdateNotification> notification_; // once there was something to tell
    std::function<void()> answerUnanswered_;           // while a question is open
    bool hasPage_ = false;
};

} // namespace fernhollow
