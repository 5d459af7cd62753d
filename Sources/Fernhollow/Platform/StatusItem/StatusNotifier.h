#pragma once

#include "Platform/StatusItem/NotifierTypes.h"
#include "Platform/StatusItem/StatusItem.h"

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>

#include <functional>

class QDBusMessage;

namespace fernhollow {

class MenuAdaptor;
class NotifierAdaptor;

/// Our item on one bus, for hosts of the StatusNotifierItem protocol: exported once, registered with
/// every watcher that takes the well-known name, with signals only while a host listens.
///
/// Owned by StatusItem, main thread. Every call to the bus is asynchronous; answers that belong to an
/// earlier owner of the watcher's name are ignored. The icon is drawn when a host asks for it.
class StatusNotifier : public QObject {
    Q_OBJECT

public:
    enum class Watcher { Unknown, Absent, Present };

    StatusNotifier(const QDBusConnection& bus, StatusIcons icons, QObject* parent = nullptr);
    ~StatusNotifier() override;

    void setTitle(const QString& title);
    QString title() const { return title_; }
    void setNote(const QString& note);
    QString note() const { return note_; }
    /// Whether the text is to look as if it stood still.
    void setHalted(bool halted);
    void setMenu(StatusMenu menu);
    static QString menuPath();
    NotifierImages images() const;

    Watcher watcher() const { return watcher_; }
    bool isShown() const { return registered_ && hostPresent_; }

Q_SIGNALS:
    void clicked(const QByteArray& activationToken);
    /// watcher() or isShown() may have changed.
    void presenceChanged();
    /// The watcher stays and has taken the item out of its list.
    void dropped();

private:
    Q_SLOT void askForHost();
    Q_SLOT void itemUnregistered(const QString& item);
    void watch();
    void attach();
    void detach();
    void call(const QDBusMessage& message, std::function<void(const QDBusMessage&)> answered);
    void registrationAnswered(const QDBusMessage& answer);
    QString iconText() const;

    QDBusConnection bus_;
    QDBusServiceWatcher owner_;
    const StatusIcons icons_;
    NotifierAdaptor* adaptor_; // child
    QObject menuObject_;       // what the menu is exported with
    MenuAdaptor* menu_;        // child of it
    QString title_;
    QString note_;
    QString compact_;
    mutable QString drawnText_;
    mutable NotifierImages drawn_;
    Watcher watcher_ = Watcher::Unknown;
    bool halted_ = false;
    bool registered_ = false;
    bool hostPresent_ = false;
    unsigned ownerGeneration_ = 0;
};

} // namespace fernhollow
