#pragma once

#include "Platform/Wayland/WaylandWorkspace.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>
#include <QTimer>

#include <memory>

class QTemporaryFile;

namespace fernhollow {

/// The frontmost application of KDE Plasma's Wayland session, as a script reports it that runs inside KWin
/// (`org.kde.kwin.Scripting`, KWin 5.27 and 6). The script passes on the window's desktop file and class,
/// never its title. It is loaded anew whenever KWin is, and unloaded at the end. Main thread only.
class KWinWorkspace final : public QObject, public WaylandWorkspace, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "app.fernhollow.Workspace")

public:
    KWinWorkspace(DesktopEntries entries, std::shared_ptr<KeytapConnection> connection);
    ~KWinWorkspace() override;

public Q_SLOTS:
    /// Called by the script. Both are empty for no window, and for a moment at each switch.
    void Activated(const QString& desktopFile, const QString& windowClass);

private:
    void load();
    void run(int script, const std::shared_ptr<QTemporaryFile>& file);
    void lose(const QString& reason);

    QDBusConnection bus_;
    QDBusServiceWatcher kwin_;
    QString owner_; ///< KWin's unique name, whose reports alone are taken
    QTimer emptyReport_;
    bool isLossLogged_ = false;
};

} // namespace fernhollow
