#pragma once

#include "Platform/StatusItem/StatusMenu.h"

#include <QObject>
#include <QString>

namespace fernhollow {

/// Another place for the status item, for desktops that show none over the StatusNotifierItem protocol.
///
/// Shows the item only while it is enabled, which is while no watcher of that protocol runs. Owned by the
/// StatusItem; main thread only.
class Tray : public QObject {
    Q_OBJECT

public:
    virtual void setEnabled(bool enabled) = 0;
    virtual void setTitle(const QString& title) = 0;
    virtual void setNote(const QString& note) = 0;
    virtual void setHalted(bool halted) = 0;
    virtual void setMenu(const StatusMenu& menu) = 0;
    virtual bool isShown() const = 0;

Q_SIGNALS:
    void clicked();
    void shownChanged();
};

} // namespace fernhollow
