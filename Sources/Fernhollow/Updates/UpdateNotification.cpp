#include "Updates/UpdateNotification.h"

#include "Support/ApplicationIdentity.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QVariantMap>

#include <utility>

namespace fernhollow {
namespace {

const QString service = QStringLiteral("org.freedesktop.Notifications");
const QString path = QStringLiteral("/org/freedesktop/Notifications");
const QString showAction = QStringLiteral("default"); // a click on the notification itself

constexpr uchar lowUrgency = 0;
constexpr int serversOwnTimeout = -1;

QDBusMessage makeCall(const QString& method) {
    return QDBusMessage::createMethodCall(service, path, service, method);
}

} // namespace

UpdateNotification::UpdateNotification(const QDBusConnection& bus, Activated activated)
    : bus_(bus), activated_(std::move(activated)) {}

void UpdateNotification::show(const std::string& version) {
    if (!bus_.isConnected()) {
        return;
    }
    if (!std::exchange(isAsked_, true)) {
        // No sender is named, because Qt would ask the bus for its owner and wait for the answer.
        bus_.connect({}, path, service, QStringLiteral("ActivationToken"), this,
                     SLOT(tokenProvided(uint, QString)));
        bus_.connect({}, path, service, QStringLiteral("ActionInvoked"), this,
                     SLOT(actionInvoked(uint, QString)));
        bus_.connect({}, path, service, QStringLiteral("NotificationClosed"), this,
                     SLOT(notificationClosed(uint, uint)));
    }
    const QVariantMap hints{
        {QStringLiteral("urgency"), QVariant::fromValue(lowUrgency)},
        {QStringLiteral("desktop-entry"), QString::fromUtf8(applicationIdentifier.data())},
    };
    auto message = makeCall(QStringLiteral("Notify"));
    // The version goes into the summary, which is plain text; servers read markup in a body.
    message << QStringLiteral("Fernhollow") << id_ << QString::fromUtf8(applicationIdentifier.data())
            << QStringLiteral("Fernhollow %1 is available").arg(QString::fromStdString(version))
            << QStringLiteral("Click to see what is new.") << QStringList{showAction, QStringLiteral("Show")}
            << hints << serversOwnTimeout;
    auto* pending = new QDBusPendingCallWatcher(bus_.asyncCall(message), this);
    connect(pending, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* finished) {
        finished->deleteLater();
        const QDBusMessage answer = finished->reply();
        if (answer.type() == QDBusMessage::ReplyMessage && !answer.arguments().isEmpty()) {
            id_ = answer.arguments().constFirst().toUInt();
        }
    });
}

void UpdateNotification::close() {
    if (const uint shown = std::exchange(id_, 0); shown != 0) {
        auto message = makeCall(QStringLiteral("CloseNotification"));
        message << shown;
        bus_.send(message);
    }
}

void UpdateNotification::tokenProvided(uint id, const QString& token) {
    if (id != 0 && id == id_) {
        activationToken_ = token.toUtf8();
    }
}

void UpdateNotification::actionInvoked(uint id, const QString& action) {
    if (id != 0 && id == id_ && action == showAction) {
        activated_(std::exchange(activationToken_, {}));
    }
}

void UpdateNotification::notificationClosed(uint id, uint /*reason*/) {
    if (id == id_) {
        id_ = 0;
    }
}

} // namespace fernhollow
