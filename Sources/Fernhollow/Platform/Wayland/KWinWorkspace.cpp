#include "Platform/Wayland/KWinWorkspace.h"

#include "Support/DebugLog.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QTemporaryFile>

#include <chrono>
#include <utility>

namespace fernhollow {
namespace {

using namespace std::chrono_literals;

constexpr auto service = "org.kde.KWin";
constexpr auto plugin = "app.fernhollow.workspace";
constexpr auto objectPath = "/app/fernhollow/Workspace";

// KWin reports "no window" between two windows. A press in that moment belongs to neither; the old one is
// nearer the truth.
constexpr auto emptyReportDelay = 50ms;

// KWin 6 renamed what KWin 5 called a client.
constexpr auto scriptText = R"(
function report(window) {
    callDBus("%1", "%2", "app.fernhollow.Workspace", "Activated",
             String(window && window.desktopFileName || ""), String(window && window.resourceClass || ""));
}
(workspace.windowActivated || workspace.clientActivated).connect(report);
report(workspace.activeWindow || workspace.activeClient);
)";

QDBusMessage call(const QString& path, const char* interface, const char* method,
                  const QVariantList& arguments) {
    auto message = QDBusMessage::createMethodCall(QString::fromUtf8(service), path,
                                                  QString::fromUtf8(interface), QString::fromUtf8(method));
    message.setArguments(arguments);
    message.setAutoStartService(false);
    return message;
}

QDBusMessage scripting(const char* method, const QVariantList& arguments) {
    return call(QStringLiteral("/Scripting"), "org.kde.kwin.Scripting", method, arguments);
}

} // namespace

KWinWorkspace::KWinWorkspace(DesktopEntries entries, std::shared_ptr<KeytapConnection> connection)
    : WaylandWorkspace(std::move(entries), std::move(connection)), bus_(QDBusConnection::sessionBus()),
      kwin_(QString::fromUtf8(service), bus_, QDBusServiceWatcher::WatchForOwnerChange) {
    emptyReport_.setSingleShot(true);
    emptyReport_.setInterval(emptyReportDelay);
    connect(&emptyReport_, &QTimer::timeout, this, [this] { follow({}); });
    bus_.registerObject(QString::fromUtf8(objectPath), this,
                        QDBusConnection::ExportScriptableSlots | QDBusConnection::ExportNonScriptableSlots);
    connect(&kwin_, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString& /*name*/, const QString& /*old*/, const QString& owner) {
                owner_ = owner;
                follow({});
                if (!owner.isEmpty()) {
                    load();
                }
            });
    const auto asked = bus_.asyncCall(QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
                                                                     QStringLiteral("/org/freedesktop/DBus"),
                                                                     QStringLiteral("org.freedesktop.DBus"),
                                                                     QStringLiteral("GetNameOwner"))
                                      << QString::fromUtf8(service));
    auto* watcher = new QDBusPendingCallWatcher(asked, this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* call) {
        call->deleteLater();
        if (const QDBusPendingReply<QString> owner = *call; owner.isError()) {
            lose(owner.error().message());
        } else {
            owner_ = owner.value();
            load();
        }
    });
}

KWinWorkspace::~KWinWorkspace() {
    if (!owner_.isEmpty()) {
        bus_.send(scripting("unloadScript", {QString::fromUtf8(plugin)}));
    }
}

void KWinWorkspace::Activated(const QString& desktopFile, const QString& windowClass) {
    if (!calledFromDBus() || message().service() != owner_) {
        return;
    }
    if (desktopFile.isEmpty() && windowClass.isEmpty()) {
        emptyReport_.start();
        return;
    }
    emptyReport_.stop();
    WindowFacts facts;
    facts.kdeDesktopFile = desktopFile.toStdString();
    facts.windowClass = windowClass.toStdString();
    follow(facts);
}

// A script outlives the program that loaded it, and one of the same name is not loaded twice.
void KWinWorkspace::load() {
    bus_.send(scripting("unloadScript", {QString::fromUtf8(plugin)}));
    auto file = std::make_shared<QTemporaryFile>();
    const QString text = QString::fromUtf8(scriptText).arg(bus_.baseService(), QString::fromUtf8(objectPath));
    if (!file->open() || file->write(text.toUtf8()) < 0 || !file->flush()) {
        lose(file->errorString());
        return;
    }
    auto* watcher = new QDBusPendingCallWatcher(
        bus_.asyncCall(scripting("loadScript", {file->fileName(), QString::fromUtf8(plugin)})), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, file](QDBusPendingCallWatcher* call) {
        call->deleteLater();
        const QDBusPendingReply<int> script = *call;
        if (script.isError() || script.value() < 0) {
            lose(script.isError() ? script.error().message() : QStringLiteral("the script was not loaded"));
        } else {
            run(script.value(), file);
        }
    });
}

// KWin 6 keeps its scripts under another path than KWin 5.
void KWinWorkspace::run(int script, const std::shared_ptr<QTemporaryFile>& file) {
    for (const char* folder : {"/Scripting/Script", "/"}) {
        auto* watcher = new QDBusPendingCallWatcher(
            bus_.asyncCall(
                call(QString::fromUtf8(folder) + QString::number(script), "org.kde.kwin.Script", "run", {})),
            this);
        // KWin reads the file when it runs the script.
        connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
                [watcher, file] { watcher->deleteLater(); });
    }
}

void KWinWorkspace::lose(const QString& reason) {
    if (!std::exchange(isLossLogged_, true)) {
        debugLog("[Workspace] KWin does not report the application in front: " + reason.toStdString());
    }
}

} // namespace fernhollow
