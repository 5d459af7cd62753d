#include "Updates/FolderPresentation.h"

#include "Support/DebugLog.h"
#include "Updates/DetachedProcess.h"

#include <QCoroDBusPendingCall>
#include <QDBusMessage>
#include <QStandardPaths>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <string>
#include <system_error>

namespace fernhollow {
namespace {

QDBusMessage showItems(const std::filesystem::path& file) {
    auto message = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    const QString address =
        QUrl::fromLocalFile(QString::fromStdString(file.native())).toString(QUrl::FullyEncoded);
    message.setArguments({QStringList{address}, QString()});
    return message;
}

void openFolder(const std::filesystem::path& folder) {
    const QString opener = QStandardPaths::findExecutable(QStringLiteral("xdg-open"));
    if (opener.isEmpty()) {
        debugLog("[FolderPresentation] No program here shows folders");
        return;
    }
    try {
        // Our umask is for the files that we write, not for those that a person creates in the file manager.
        startDetached(
            {"/bin/sh", "-c", R"(umask 022; exec "$0" "$1")", opener.toStdString(), folder.native()},
            currentEnvironment());
    } catch (const std::system_error& error) {
        debugLog(std::string("[FolderPresentation] The folder cannot be shown: ") + error.what());
    }
}

} // namespace

QCoro::Task<> showInFolder(QDBusConnection bus, std::filesystem::path file) {
    const auto call = bus.asyncCall(showItems(file));
    const QDBusMessage answer = co_await call;
    if (answer.type() != QDBusMessage::ReplyMessage) {
        openFolder(file.parent_path());
    }
}

} // namespace fernhollow
