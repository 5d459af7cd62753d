#pragma once

#include "Platform/StatusItem/NotifierTypes.h"

#include <QDBusAbstractAdaptor>
#include <QDBusObjectPath>

namespace fernhollow {

class StatusNotifier;

/// The item as status bars see it on the session bus. Owned by its StatusNotifier, whose state it
/// reads; Qt calls it on the main thread when a host asks.
///
/// Hosts open the menu on a right click; those that know no menus hand the click on. ItemIsMenu says that a
/// left click is ours in any case. There are hosts that drop an item without a menu.
class NotifierAdaptor : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
    Q_PROPERTY(QString Category READ category)
    Q_PROPERTY(QString Id READ id)
    Q_PROPERTY(QString Title READ title)
    Q_PROPERTY(QString Status READ status)
    Q_PROPERTY(int WindowId READ windowId)
    Q_PROPERTY(bool ItemIsMenu READ itemIsMenu)
    Q_PROPERTY(QDBusObjectPath Menu READ menu)
    Q_PROPERTY(QString IconThemePath READ none)
    Q_PROPERTY(QString IconName READ none)
    Q_PROPERTY(fernhollow::NotifierImages IconPixmap READ iconPixmap)
    Q_PROPERTY(QString OverlayIconName READ none)
    Q_PROPERTY(fernhollow::NotifierImages OverlayIconPixmap READ noImages)
    Q_PROPERTY(QString AttentionIconName READ none)
    Q_PROPERTY(fernhollow::NotifierImages AttentionIconPixmap READ noImages)
    Q_PROPERTY(QString AttentionMovieName READ none)
    Q_PROPERTY(fernhollow::NotifierToolTip ToolTip READ toolTip)
    Q_PROPERTY(QString XAyatanaLabel READ title)
    Q_PROPERTY(QString XAyatanaLabelGuide READ title)

public:
    explicit NotifierAdaptor(StatusNotifier* notifier);

    QString category() const { return QStringLiteral("ApplicationStatus"); }
    QString id() const;
    QString title() const;
    QString status() const { return QStringLiteral("Active"); }
    int windowId() const { return 0; }
    bool itemIsMenu() const { return false; }
    QDBusObjectPath menu() const;
    QString none() const { return {}; }
    NotifierImages noImages() const { return {}; }
    NotifierImages iconPixmap() const;
    NotifierToolTip toolTip() const;

public Q_SLOTS:
    /// Hosts call it before one of the following, in sessions where windows need it to come to the front.
    void ProvideXdgActivationToken(const QString& token);
    void Activate(int x, int y);
    void SecondaryActivate(int x, int y);
    void ContextMenu(int x, int y);
    void Scroll(int delta, const QString& orientation);

Q_SIGNALS:
    void NewTitle();
    void NewIcon();
    void NewAttentionIcon();
    void NewOverlayIcon();
    void NewToolTip();
    void NewStatus(const QString& status);
    void XAyatanaNewLabel(const QString& label, const QString& guide);

private:
    void click();

    StatusNotifier& notifier_;
    QByteArray activationToken_; // for the next click
};

} // namespace fernhollow
