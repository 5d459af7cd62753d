#include "Updates/PackageKit.h"

#include "Support/ApplicationIdentity.h"
#include "Support/DebugLog.h"
#include "Updates/UpdateError.h"

#include <QCoroDBusPendingCall>
#include <QDBusMessage>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <limits>
#include <string>

namespace fernhollow {
namespace {

// The person may take any time to enter a password.
constexpr int noTimeout = std::numeric_limits<int>::max();

QDBusMessage methodOf(const QString& interface) {
    return QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.PackageKit"),
                                          QStringLiteral("/org/freedesktop/PackageKit"), interface,
                                          QStringLiteral("InstallPackageFiles"));
}

QDBusMessage modify2(const QStringList& files) {
    auto message = methodOf(QStringLiteral("org.freedesktop.PackageKit.Modify2"));
    const QString desktopId = QString::fromUtf8(applicationIdentifier.data()) + QStringLiteral(".desktop");
    message.setArguments({files, QString(), desktopId, QVariantMap()});
    return message;
}

QDBusMessage modify(const QStringList& files) {
    auto message = methodOf(QStringLiteral("org.freedesktop.PackageKit.Modify"));
    constexpr quint32 noWindow = 0;
    message.setArguments({noWindow, files, QString()});
    return message;
}

/// True when the package is installed; false when the bus itself answered that there is no such service or
/// interface.
bool understand(const QDBusMessage& answer) {
    if (answer.type() == QDBusMessage::ReplyMessage) {
        return true;
    }
    const QString name = answer.errorName();
    debugLog("[PackageKit] " + name.toStdString() + ": " + answer.errorMessage().toStdString());
    if (name.startsWith(u"org.freedesktop.DBus.Error.")) {
        return false;
    }
    if (name.endsWith(u".Cancelled")) {
        throw UpdateError(UpdateError::Reason::cancelled, "The installation was cancelled.");
    }
    throw UpdateError(UpdateError::Reason::install, "Your system's installer could not install the update: " +
                                                        answer.errorMessage().left(200).toStdString());
}

} // namespace

QCoro::Task<bool> installWithPackageKit(QDBusConnection bus, std::filesystem::path package) {
    const QStringList files{QString::fromStdString(package.native())};
    const auto first = bus.asyncCall(modify2(files), noTimeout);
    if (understand(co_await first)) {
        co_return true;
    }
    const auto second = bus.asyncCall(modify(files), noTimeout);
    co_return understand(co_await second);
}

} // namespace fernhollow
