#pragma once

#include <QByteArray>
#include <QDBusConnection>
#include <QObject>

#include <functional>
#include <string>

namespace fernhollow {

/// One quiet notification of the desktop (org.freedesktop.Notifications 1.2) that tells of a release. Where
/// there is no notification server nothing comes up. Main thread only.
class UpdateNotification : public QObject {
    Q_OBJECT

public:
    /// Called with the desktop's leave to come to the front, empty where it gave none.
    using Activated = std::function<void(const QByteArray& activationToken)>;

    /// `activated` is called when the person chooses the notification, however much later.
    UpdateNotification(const QDBusConnection& bus, Activated activated);

    void show(const std::string& version);

    /// Takes the notification back, once the person has seen the release's window.
    void close();

private Q_SLOTS:
    void tokenProvided(uint id, const QString& token); // NOLINT(readability-identifier-length)
    void actionInvoked(uint id,
                       const QString& action);     // NOLINT(readability-identifier-length): the wire's name
    void notificationClosed(uint id, uint reason); // NOLINT(readability-identifier-length)

private:
    QDBusConnection bus_;
    Activated activated_;
    QByteArray activationToken_; // comes before the action that it belongs to
    uint id_ = 0;                // of what is shown; 0 is none
    bool isAsked_ = false;
};

} // namespace fernhollow
