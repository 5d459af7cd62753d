#pragma once

#include "Platform/StatusItem/Tray.h"

#include <QAbstractNativeEventFilter>
#include <QMenu>
#include <QSystemTrayIcon>

#include <cstdint>
#include <memory>

struct xcb_connection_t;

namespace fernhollow {

/// The status item in a tray of the older X11 kind (System Tray Protocol), while it is enabled and such a
/// tray exists.
///
/// Owned by StatusItem, main thread only. Qt has to run on X11, because this uses Qt's connection. It
/// learns from events that the X server sends anyway when a tray comes or goes, and holds no resources
/// while it is disabled.
class XEmbedTray final : public Tray, private QAbstractNativeEventFilter {
    Q_OBJECT

public:
    XEmbedTray() = default;
    ~XEmbedTray() override;

    void setEnabled(bool enabled) override;
    void setTitle(const QString& title) override;
    void setNote(const QString& note) override;
    void setHalted(bool halted) override;
    void setMenu(const StatusMenu& menu) override;
    bool isShown() const override { return icon_ != nullptr; }

private:
    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;
    std::uint32_t findTray();
    void follow();
    void dock();
    void undock();
    QString toolTip() const;
    QIcon icon() const;

    bool enabled_ = false;
    bool followPosted_ = false;
    xcb_connection_t* connection_ = nullptr; // Qt's
    std::uint32_t managerAtom_ = 0;
    std::uint32_t selectionAtom_ = 0;
    std::uint32_t trayWindow_ = 0;
    QString title_;
    QString note_;
    QString compact_;
    bool halted_ = false;
    QMenu menu_;
    std::unique_ptr<QSystemTrayIcon> icon_;
};

} // namespace fernhollow
