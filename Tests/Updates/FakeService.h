#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>

#include <functional>
#include <map>

namespace fernhollow::tests {

/// A service of the session, on a connection of its own, that writes down what it is asked and answers as it
/// is told.
class FakeService : public QDBusVirtualObject {
public:
    FakeService(const QString& name, const QString& path) : name_(name), path_(path) {
        bus_.registerVirtualObject(path, this);
        bus_.registerService(name);
    }
    ~FakeService() override {
        bus_.unregisterService(name_);
        QDBusConnection::disconnectFromBus(bus_.name());
    }

    /// What each known interface does and answers.
    std::map<QString, std::function<QDBusMessage(const QDBusMessage& call)>> interfaces;
    QList<QDBusMessage> calls;

    void emitSignal(const QString& name, const QVariantList& arguments) {
        auto message = QDBusMessage::createSignal(path_, name_, name);
        message.setArguments(arguments);
        bus_.send(message);
    }

    QString introspect(const QString& /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        const auto known = interfaces.find(message.interface());
        if (known == interfaces.end()) {
            return false;
        }
        calls.append(message);
        return connection.send(known->second(message));
    }

private:
    inline static int count_ = 0;
    QString name_, path_;
    QDBusConnection bus_ = QDBusConnection::connectToBus(QDBusConnection::SessionBus,
                                                         QStringLiteral("fake-service-%1").arg(++count_));
};

} // namespace fernhollow::tests
