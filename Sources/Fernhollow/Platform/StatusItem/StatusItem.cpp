#include "Platform/StatusItem/StatusItem.h"

#include "Platform/StatusItem/StatusNotifier.h"

#include <QDBusConnection>
#include <QElapsedTimer>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <utility>

namespace fernhollow {
namespace {

using namespace std::chrono_literals;

// Twenty changes a second look like counting along; each costs the host a handful of messages.
constexpr auto publishingInterval = 50ms;

const QString connectionName = QStringLiteral("fernhollow_status_item");

/// A connection of its own: when it closes, watchers know that the item is gone.
class BusConnection {
public:
    BusConnection() : bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, connectionName)) {}
    ~BusConnection() { QDBusConnection::disconnectFromBus(connectionName); }
    BusConnection(const BusConnection&) = delete;
    BusConnection& operator=(const BusConnection&) = delete;

    QDBusConnection bus;
};

} // namespace

class StatusItem::Private {
public:
    Private(StatusItem& item, StatusIcons icons, std::unique_ptr<Tray> tray)
        : item_(item), notifier_(connection_.bus, icons), tray_(std::move(tray)) {
        trailing_.setSingleShot(true);
        trailing_.setTimerType(Qt::PreciseTimer);
        connect(&trailing_, &QTimer::timeout, &item_, [this] { publish(); });
        connect(&notifier_, &StatusNotifier::clicked, &item_, &StatusItem::clicked);
        connect(&notifier_, &StatusNotifier::dropped, &item_, &StatusItem::dropped);
        connect(&notifier_, &StatusNotifier::presenceChanged, &item_, [this] { presenceChanged(); });
        if (tray_) {
            connect(tray_.get(), &Tray::clicked, &item_, [this] { Q_EMIT item_.clicked({}); });
            connect(tray_.get(), &Tray::shownChanged, &item_, [this] { announceShown(); });
        }
        presenceChanged();
    }

    void setTitle(const QString& title) {
        if (title == title_) {
            return;
        }
        title_ = title;
        if (trailing_.isActive()) {
            return;
        }
        const std::chrono::milliseconds since(sincePublished_.isValid() ? sincePublished_.elapsed() : -1);
        if (!sincePublished_.isValid() || since >= publishingInterval) {
            publish();
        } else {
            trailing_.start(publishingInterval - since);
        }
    }

    void setNote(const QString& note) {
        notifier_.setNote(note);
        if (tray_) {
            tray_->setNote(note);
        }
    }

    void setHalted(bool halted) {
        notifier_.setHalted(halted);
        if (tray_) {
            tray_->setHalted(halted);
        }
    }

    void setMenu(const StatusMenu& menu) {
        if (std::ranges::equal(menu, menu_, {}, &StatusMenuEntry::label, &StatusMenuEntry::label)) {
            return;
        }
        menu_ = menu;
        notifier_.setMenu(menu);
        if (tray_) {
            tray_->setMenu(menu);
        }
    }

    QString title() const { return title_; }
    bool isShown() const { return notifier_.isShown() || (tray_ && tray_->isShown()); }

private:
    void publish() {
        sincePublished_.start();
        notifier_.setTitle(title_);
        if (tray_) {
            tray_->setTitle(title_);
        }
    }

    // Qt decides for good, when it makes its first tray icon, by whether a watcher exists, which of the
    // two protocols its tray icons speak: so it makes none while one exists, with or without a host.
    void presenceChanged() {
        if (tray_) {
            tray_->setEnabled(notifier_.watcher() == StatusNotifier::Watcher::Absent);
        }
        announceShown();
    }

    void announceShown() {
        if (const bool shown = isShown(); shown != shownBefore_) {
            shownBefore_ = shown;
            Q_EMIT item_.shownChanged(shown);
        }
    }

    StatusItem& item_;
    BusConnection connection_;
    StatusNotifier notifier_;
    std::unique_ptr<Tray> tray_;
    QTimer trailing_;
    QElapsedTimer sincePublished_;
    QString title_;
    StatusMenu menu_;
    bool shownBefore_ = false;
};

StatusItem::StatusItem(StatusIcons icons, std::unique_ptr<Tray> tray)
    : d(std::make_unique<Private>(*this, icons, std::move(tray))) {}

StatusItem::~StatusItem() = default;

void StatusItem::setTitle(const QString& title) {
    d->setTitle(title);
}

void StatusItem::setNote(const QString& note) {
    d->setNote(note);
}

void StatusItem::setHalted(bool halted) {
    d->setHalted(halted);
}

void StatusItem::setMenu(const StatusMenu& menu) {
    d->setMenu(menu);
}

QString StatusItem::title() const {
    return d->title();
}

bool StatusItem::isShown() const {
    return d->isShown();
}

} // namespace fernhollow
