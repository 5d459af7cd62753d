#pragma once

#include "Support/EventLoop.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingReply>

#include <map>

namespace fernhollow::tests {

/// A status bar: watcher and host of the StatusNotifierItem protocol, on a connection of its own.
class FakeNotifierHost : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered MEMBER hasHost_)

public:
    explicit FakeNotifierHost(bool withHost = true) : hasHost_(withHost) {
        bus_.registerObject(QStringLiteral("/StatusNotifierWatcher"), this,
                            QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals |
                                QDBusConnection::ExportAllProperties);
        bus_.registerService(QStringLiteral("org.kde.StatusNotifierWatcher"));
        bus_.connect({}, itemPath, itemInterface, {}, this, SLOT(hear(QDBusMessage)));
        bus_.connect({}, {}, menuInterface, {}, this, SLOT(hear(QDBusMessage)));
    }
    ~FakeNotifierHost() override { QDBusConnection::disconnectFromBus(bus_.name()); }

    void setHost(bool present) {
        hasHost_ = present;
        present ? Q_EMIT StatusNotifierHostRegistered() : Q_EMIT StatusNotifierHostUnregistered();
    }

    /// All properties of the item registered last, as a host asks for them.
    QVariantMap properties() {
        const QDBusPendingReply<QVariantMap> reply = call(QStringLiteral("org.freedesktop.DBus.Properties"),
                                                          QStringLiteral("GetAll"), {itemInterface});
        return waitUntil([&] { return reply.isFinished(); }) ? reply.value() : QVariantMap();
    }
    QDBusPendingCall call(const QString& interface, const QString& method, const QVariantList& arguments) {
        auto message = QDBusMessage::createMethodCall(items.last(), itemPath, interface, method);
        message.setArguments(arguments);
        return bus_.asyncCall(message);
    }

    QDBusPendingCall callMenu(const QString& path, const QString& method, const QVariantList& arguments) {
        auto message = QDBusMessage::createMethodCall(items.last(), path, menuInterface, method);
        message.setArguments(arguments);
        return bus_.asyncCall(message);
    }

    /// The services that registered, in order.
    QStringList items;

    /// How often each signal of the item came, and the last label.
    std::map<QString, int> signalCounts;
    QString label;

    const QString itemPath = QStringLiteral("/StatusNotifierItem");
    const QString menuInterface = QStringLiteral("com.canonical.dbusmenu");
    const QString itemInterface = QStringLiteral("org.kde.StatusNotifierItem");

public Q_SLOTS:
    void RegisterStatusNotifierItem(const QString& service) { items.append(service); }

Q_SIGNALS:
    void StatusNotifierHostRegistered();
    void StatusNotifierHostUnregistered();
    void StatusNotifierItemUnregistered(const QString& item);

private:
    Q_SLOT void hear(const QDBusMessage& signal) {
        ++signalCounts[signal.member()];
        if (signal.member() == u"XAyatanaNewLabel") {
            label = signal.arguments().first().toString();
        }
    }

    inline static int count_ = 0;
    QDBusConnection bus_ = QDBusConnection::connectToBus(QDBusConnection::SessionBus,
                                                         QStringLiteral("fake-host-%1").arg(++count_));
    bool hasHost_;
};

} // namespace fernhollow::tests
