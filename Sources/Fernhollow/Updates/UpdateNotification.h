#pragma once

#include <QByteArray>
#include <QDBusConnection>
#include <QObject>

#include <functional>
#include <string>

namespace fernhollow {

/// One quiet desktop notification (org.freedesktop.Notifications 1.2) of a new release. Without a
/// notification server nothing appears. Main thread only.
class UpdateNotification : public QObject {
    Q_OBJECT

public:
    /// Called with the desktop's permission to come to the front, empty where it gave none.
    using Activated = std::function<void(const QByteArray& activationToken)>;

    /// `activated` is called when the person clicks on the notification, however much later.
    UpdateNotification(const QDBusConnection& bus, Activated activated);

    void show(const std::string& version);

    /// Withdraws the notification, once the person has seen the release's window.
    void close();

private Q_SLOTS:
    void tokenProvided(uint id, const QString& token); // NOLINT(readability-identifier-length)
    void actionInvoked(uint id,
                       const QString& action);     // NOLINT(readability-identifier-length): the wire's name
    void notificationClosed(uint id, uint reason); // NOLINT(readability-identifier-length)

private:
    QDBusConnection bus_;
    Activated activated_;
    QByteArray activationToken_; // arrives before the action that it belongs to
    uint id_ = 0;                // of the notification that is shown; 0 without one
    bool isAsked_ = false;
};

} // namespace fernhollow
