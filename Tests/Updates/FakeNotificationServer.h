#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

namespace fernhollow::tests {

/// A desktop's notification server (org.freedesktop.Notifications), on a connection of its own.
class FakeNotificationServer : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

public:
    FakeNotificationServer() {
        bus_.registerObject(QStringLiteral("/org/freedesktop/Notifications"), this,
                            QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals);
        bus_.registerService(QStringLiteral("org.freedesktop.Notifications"));
    }
    ~FakeNotificationServer() override { QDBusConnection::disconnectFromBus(bus_.name()); }

    QStringList summaries;
    QStringList actions; ///< of the last one: keys and labels in turns
    QVariantMap hints;   ///< of the last one
    QList<uint> replaced;
    QList<uint> closed;

public Q_SLOTS:
    uint Notify(const QString&, uint replaces, const QString&, const QString& summary, const QString&,
                const QStringList& offered, const QVariantMap& given, int) {
        summaries.append(summary);
        replaced.append(replaces);
        actions = offered;
        hints = given;
        return replaces != 0 ? replaces : ++last_;
    }
    void CloseNotification(uint id) { closed.append(id); }

Q_SIGNALS:
    void ActivationToken(uint id, const QString& token);
    void ActionInvoked(uint id, const QString& action);
    void NotificationClosed(uint id, uint reason);

private:
    inline static int count_ = 0;
    QDBusConnection bus_ = QDBusConnection::connectToBus(QDBusConnection::SessionBus,
                                                         QStringLiteral("notifications-%1").arg(++count_));
    uint last_ = 40;
};

} // namespace fernhollow::tests
