#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

#include <map>
#include <string>

namespace fernhollow::tests {

/// A status bar: watcher and host of the StatusNotifierItem protocol, on a connection of its own.
class FakeNotifierHost : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ hasHost)

public:
    explicit FakeNotifierHost(bool withHost = true);
    ~FakeNotifierHost() override;

    bool hasHost() const { return hasHost_; }
    void setHost(bool present);

    /// The services that registered, in order.
    QStringList items;

    /// How often each signal of the item came, and the last label.
    std::map<std::string, int> signalCounts;
    QString label;

    /// All properties of the item registered last, as a host asks for them.
    QVariantMap properties();
    void call(const QString& method, const QVariantList& arguments);

public Q_SLOTS:
    void RegisterStatusNotifierItem(const QString& service);

Q_SIGNALS:
    void StatusNotifierHostRegistered();
    void StatusNotifierHostUnregistered();

private:
    Q_SLOT void newTitle() { ++signalCounts["NewTitle"]; }
    Q_SLOT void newIcon() { ++signalCounts["NewIcon"]; }
    Q_SLOT void newToolTip() { ++signalCounts["NewToolTip"]; }
    Q_SLOT void newLabel(const QString& text, const QString& guide);

    QString name_;
    QDBusConnection bus_;
    bool hasHost_;
};

} // namespace fernhollow::tests
