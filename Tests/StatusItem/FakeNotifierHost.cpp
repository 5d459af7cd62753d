#include "FakeNotifierHost.h"

#include "Support/EventLoop.h"

#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingReply>

namespace fernhollow::tests {
namespace {

const QString itemPath = QStringLiteral("/StatusNotifierItem");
const QString itemInterface = QStringLiteral("org.kde.StatusNotifierItem");

QString nextName() {
    static int count = 0;
    return QStringLiteral("fake-host-%1").arg(++count);
}

} // namespace

FakeNotifierHost::FakeNotifierHost(bool withHost)
    : name_(nextName()), bus_(QDBusConnection::connectToBus(QDBusConnection::SessionBus, name_)),
      hasHost_(withHost) {
    bus_.registerObject(QStringLiteral("/StatusNotifierWatcher"), this,
                        QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals |
                            QDBusConnection::ExportAllProperties);
    bus_.registerService(QStringLiteral("org.kde.StatusNotifierWatcher"));
    const auto listen = [this](const char16_t* signal, const char* slot) {
        bus_.connect(QString(), itemPath, itemInterface, QString::fromUtf16(signal), this, slot);
    };
    listen(u"NewTitle", SLOT(newTitle()));
    listen(u"NewIcon", SLOT(newIcon()));
    listen(u"NewToolTip", SLOT(newToolTip()));
    listen(u"XAyatanaNewLabel", SLOT(newLabel(QString, QString)));
}

FakeNotifierHost::~FakeNotifierHost() {
    QDBusConnection::disconnectFromBus(name_);
}

void FakeNotifierHost::setHost(bool present) {
    hasHost_ = present;
    if (present) {
        Q_EMIT StatusNotifierHostRegistered();
    } else {
        Q_EMIT StatusNotifierHostUnregistered();
    }
}

QVariantMap FakeNotifierHost::properties() {
    auto message = QDBusMessage::createMethodCall(
        items.last(), itemPath, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("GetAll"));
    message << itemInterface;
    const QDBusPendingReply<QVariantMap> reply = bus_.asyncCall(message);
    return waitUntil([&] { return reply.isFinished(); }) ? reply.value() : QVariantMap();
}

void FakeNotifierHost::call(const QString& method, const QVariantList& arguments) {
    auto message = QDBusMessage::createMethodCall(items.last(), itemPath, itemInterface, method);
    message.setArguments(arguments);
    bus_.asyncCall(message);
}

void FakeNotifierHost::RegisterStatusNotifierItem(const QString& service) {
    items.append(service);
}

void FakeNotifierHost::newLabel(const QString& text, const QString&) {
    ++signalCounts["XAyatanaNewLabel"];
    label = text;
}

} // namespace fernhollow::tests
