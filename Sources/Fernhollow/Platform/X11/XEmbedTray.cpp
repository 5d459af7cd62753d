#include "Platform/X11/XEmbedTray.h"

#include "Platform/StatusItem/CompactCount.h"
#include "Platform/StatusItem/CountIcon.h"
#include "Platform/X11/XcbHandles.h"

#include <QGuiApplication>
#include <QIcon>
#include <QIconEngine>
#include <QPainter>
#include <xcb/xcb.h>

#include <utility>

namespace fernhollow {
namespace {

// The tray of Qt's primary screen, which is the default screen of its X connection. Further X screens are not
// in use any more.
constexpr std::string_view traySelection = "_NET_SYSTEM_TRAY_S0";

/// Draws the text at whatever size the tray gives the icon.
class CountIconEngine final : public QIconEngine {
public:
    CountIconEngine(const QString& text, bool isHalted) : icon_(text, isHalted) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode, QIcon::State) override {
        const qreal ratio = painter->device()->devicePixelRatio();
        const int side = qMin(rect.width(), rect.height());
        QImage image = icon_.drawSquare(qRound(side * ratio));
        image.setDevicePixelRatio(ratio);
        painter->drawImage(rect.left() + (rect.width() - side) / 2, rect.top() + (rect.height() - side) / 2,
                           image);
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode, QIcon::State) override {
        return QPixmap::fromImage(icon_.draw(size));
    }

    QIconEngine* clone() const override { return new CountIconEngine(*this); }
    bool isNull() override { return false; }

private:
    CountIcon icon_;
};

} // namespace

XEmbedTray::~XEmbedTray() {
    if (enabled_) {
        QCoreApplication::instance()->removeNativeEventFilter(this);
    }
}

void XEmbedTray::setEnabled(bool enabled) {
    if (std::exchange(enabled_, enabled) == enabled) {
        return;
    }
    connection_ = qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
    if (!enabled) {
        qGuiApp->removeNativeEventFilter(this);
        undock();
        return;
    }
    if (selectionAtom_ == 0) {
        managerAtom_ = internAtom(connection_, "MANAGER");
        selectionAtom_ = internAtom(connection_, traySelection);
    }
    qGuiApp->installNativeEventFilter(this);
    follow();
}

// A new tray announces itself to the root window, whose structure events Qt receives anyway. A tray
// that ends destroys its window.
bool XEmbedTray::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*) {
    if (eventType != "xcb_generic_event_t" || followPosted_) {
        return false;
    }
    const auto* event = static_cast<xcb_generic_event_t*>(message);
    const int type = event->response_type & 0x7f;
    bool changed = false;
    if (type == XCB_CLIENT_MESSAGE) {
        const auto* client = reinterpret_cast<const xcb_client_message_event_t*>(event);
        changed = client->type == managerAtom_ && client->data.data32[1] == selectionAtom_;
    } else if (type == XCB_DESTROY_NOTIFY) {
        changed = trayWindow_ != 0 &&
                  reinterpret_cast<const xcb_destroy_notify_event_t*>(event)->window == trayWindow_;
    }
    if (changed) {
        followPosted_ = true; // queued, so that Qt handles the event first
        QMetaObject::invokeMethod(this, &XEmbedTray::follow, Qt::QueuedConnection);
    }
    return false;
}

std::uint32_t XEmbedTray::findTray() {
    const auto cookie = xcb_get_selection_owner(connection_, selectionAtom_);
    const XcbReply<xcb_get_selection_owner_reply_t> reply(
        xcb_get_selection_owner_reply(connection_, cookie, nullptr));
    if (!reply || reply->owner == XCB_WINDOW_NONE) {
        return 0;
    }
    const std::uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection_, reply->owner, XCB_CW_EVENT_MASK, &mask);
    xcb_flush(connection_);
    return reply->owner;
}

void XEmbedTray::follow() {
    followPosted_ = false;
    if (!enabled_) {
        return;
    }
    const std::uint32_t tray = findTray();
    if (tray == trayWindow_) {
        return;
    }
    undock();
    trayWindow_ = tray;
    if (tray != 0) {
        dock();
    }
}

void XEmbedTray::dock() {
    icon_ = std::make_unique<QSystemTrayIcon>(icon());
    icon_->setContextMenu(&menu_);
    icon_->setToolTip(toolTip());
    // The first click of a double click was already reported as a Trigger.
    connect(icon_.get(), &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        if (reason != QSystemTrayIcon::DoubleClick && reason != QSystemTrayIcon::Context) {
            Q_EMIT clicked();
        }
    });
    icon_->show();
    Q_EMIT shownChanged();
}

void XEmbedTray::undock() {
    trayWindow_ = 0;
    if (icon_) {
        icon_.reset();
        Q_EMIT shownChanged();
    }
}

QString XEmbedTray::toolTip() const {
    return note_.isEmpty() ? countToolTip(title_) : countToolTip(title_) + u'\n' + note_;
}

QIcon XEmbedTray::icon() const {
    return QIcon(new CountIconEngine(compact_, halted_));
}

void XEmbedTray::setHalted(bool halted) {
    if (std::exchange(halted_, halted) != halted && icon_) {
        icon_->setIcon(icon());
    }
}

void XEmbedTray::setMenu(const StatusMenu& menu) {
    menu_.clear();
    for (const StatusMenuEntry& entry : menu) {
        menu_.addAction(entry.label, this, entry.perform);
    }
}

void XEmbedTray::setNote(const QString& note) {
    note_ = note;
    if (icon_) {
        icon_->setToolTip(toolTip());
    }
}

void XEmbedTray::setTitle(const QString& title) {
    title_ = title;
    const QString compact = compactCount(title);
    const bool redraw = std::exchange(compact_, compact) != compact;
    if (!icon_) {
        return;
    }
    icon_->setToolTip(toolTip());
    if (redraw) {
        icon_->setIcon(icon());
    }
}

} // namespace fernhollow
