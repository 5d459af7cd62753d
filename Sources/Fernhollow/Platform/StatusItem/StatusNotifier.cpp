#include "Platform/StatusItem/StatusNotifier.h"

#include "Platform/StatusItem/CompactCount.h"
#include "Platform/StatusItem/CountIcon.h"
#include "Platform/StatusItem/MenuAdaptor.h"
#include "Platform/StatusItem/NotifierAdaptor.h"
#include "Support/DebugLog.h"

#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QtEndian>

#include <array>
#include <utility>

namespace fernhollow {
namespace {

const QString watcherService = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");
const QString watcherInterface = watcherService;
const QString itemPath = QStringLiteral("/StatusNotifierItem");

constexpr std::array squareSides{22, 24, 32, 48, 64};

// Together with a width of at least twice that, an area beyond the largest square's.
constexpr int wideHeight = 48;

NotifierImage toNotifierImage(const QImage& image) {
    const int width = image.width();
    QByteArray pixels(image.sizeInBytes(), Qt::Uninitialized); // four bytes a pixel need no padding
    qToBigEndian<quint32>(image.constBits(), static_cast<qsizetype>(width) * image.height(), pixels.data());
    return {width, image.height(), pixels};
}

bool nobodyOwnsTheName(const QDBusMessage& error) {
    return error.errorName() == QLatin1StringView("org.freedesktop.DBus.Error.NameHasNoOwner") ||
           error.errorName() == QLatin1StringView("org.freedesktop.DBus.Error.ServiceUnknown");
}

} // namespace

StatusNotifier::StatusNotifier(const QDBusConnection& bus, StatusIcons icons, QObject* parent)
    : QObject(parent), bus_(bus), owner_(watcherService, bus, QDBusServiceWatcher::WatchForOwnerChange),
      icons_(icons), adaptor_(new NotifierAdaptor(this)), menu_(new MenuAdaptor(&menuObject_)) {
    registerNotifierTypes();
    if (!bus_.isConnected()) {
        debugLog("[StatusItem] no session bus: " + bus_.lastError().message().toStdString());
        watcher_ = Watcher::Absent;
        return;
    }
    if (!bus_.registerObject(itemPath, this, QDBusConnection::ExportAdaptors) ||
        !bus_.registerObject(menuPath(), &menuObject_, QDBusConnection::ExportAdaptors)) {
        debugLog("[StatusItem] the session bus connection has an item already");
        watcher_ = Watcher::Absent;
        return;
    }
    watch();
    attach();
}

StatusNotifier::~StatusNotifier() {
    if (bus_.isConnected()) {
        bus_.unregisterObject(itemPath);
        bus_.unregisterObject(menuPath());
    }
}

void StatusNotifier::watch() {
    connect(&owner_, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString&, const QString&, const QString& newOwner) {
                detach();
                if (newOwner.isEmpty()) {
                    watcher_ = Watcher::Absent;
                    Q_EMIT presenceChanged();
                } else {
                    attach();
                }
            });
    // Without a sender: naming one makes Qt ask the bus for its owner and wait for the answer.
    for (const auto& signal :
         {QStringLiteral("StatusNotifierHostRegistered"), QStringLiteral("StatusNotifierHostUnregistered")}) {
        bus_.connect(QString(), watcherPath, watcherInterface, signal, this, SLOT(askForHost()));
    }
    bus_.connect(QString(), watcherPath, watcherInterface, QStringLiteral("StatusNotifierItemUnregistered"),
                 this, SLOT(itemUnregistered(QString)));
}

void StatusNotifier::attach() {
    auto message = QDBusMessage::createMethodCall(watcherService, watcherPath, watcherInterface,
                                                  QStringLiteral("RegisterStatusNotifierItem"));
    message << bus_.baseService();
    call(message, [this](const QDBusMessage& answer) { registrationAnswered(answer); });
}

void StatusNotifier::detach() {
    ++ownerGeneration_;
    watcher_ = Watcher::Unknown;
    registered_ = false;
    hostPresent_ = false;
}

void StatusNotifier::registrationAnswered(const QDBusMessage& answer) {
    registered_ = answer.type() != QDBusMessage::ErrorMessage;
    watcher_ = Watcher::Present;
    if (registered_) {
        askForHost();
    } else if (nobodyOwnsTheName(answer)) {
        watcher_ = Watcher::Absent;
    } else {
        debugLog("[StatusItem] the watcher refused the item: " + answer.errorMessage().toStdString());
    }
    Q_EMIT presenceChanged();
}

void StatusNotifier::askForHost() {
    if (!registered_) {
        return;
    }
    auto message = QDBusMessage::createMethodCall(watcherService, watcherPath,
                                                  QStringLiteral("org.freedesktop.DBus.Properties"),
                                                  QStringLiteral("Get"));
    message << watcherInterface << QStringLiteral("IsStatusNotifierHostRegistered");
    call(message, [this](const QDBusMessage& answer) {
        const auto value = answer.arguments().value(0).value<QDBusVariant>().variant();
        // A watcher that cannot tell has at least taken the item.
        const bool present = answer.type() == QDBusMessage::ErrorMessage || value.toBool();
        if (std::exchange(hostPresent_, present) != present) {
            Q_EMIT presenceChanged();
        }
    });
}

// Watchers name an item by its service, its path or both.
void StatusNotifier::itemUnregistered(const QString& item) {
    const bool isOurs = item == bus_.baseService() || item.startsWith(bus_.baseService() + u'/');
    if (!isOurs || !std::exchange(registered_, false)) {
        return;
    }
    debugLog("[StatusItem] the watcher dropped the item");
    Q_EMIT presenceChanged();
    Q_EMIT dropped();
}

QString StatusNotifier::menuPath() {
    return QStringLiteral("/StatusNotifierItem/Menu");
}

void StatusNotifier::setMenu(StatusMenu menu) {
    menu_->setMenu(std::move(menu));
}

void StatusNotifier::setHalted(bool halted) {
    if (std::exchange(halted_, halted) != halted) {
        drawn_.clear();
        if (isShown()) {
            Q_EMIT adaptor_->NewIcon();
        }
    }
}

void StatusNotifier::call(const QDBusMessage& message, std::function<void(const QDBusMessage&)> answered) {
    auto request = message;
    request.setAutoStartService(false);
    auto* pending = new QDBusPendingCallWatcher(bus_.asyncCall(request), this);
    connect(pending, &QDBusPendingCallWatcher::finished, this,
            [this, generation = ownerGeneration_, answered = std::move(answered)](auto* finished) {
                finished->deleteLater();
                if (generation == ownerGeneration_) {
                    answered(finished->reply());
                }
            });
}

QString StatusNotifier::iconText() const {
    return icons_ == StatusIcons::wide ? title_ : compact_;
}

void StatusNotifier::setTitle(const QString& title) {
    if (title == title_) {
        return;
    }
    const QString iconBefore = iconText();
    title_ = title;
    compact_ = compactCount(title);
    if (!isShown()) {
        return;
    }
    Q_EMIT adaptor_->NewTitle();
    Q_EMIT adaptor_->XAyatanaNewLabel(title_, title_);
    Q_EMIT adaptor_->NewToolTip();
    if (iconText() != iconBefore) {
        Q_EMIT adaptor_->NewIcon();
    }
}

void StatusNotifier::setNote(const QString& note) {
    if (std::exchange(note_, note) != note && isShown()) {
        Q_EMIT adaptor_->NewToolTip();
    }
}

NotifierImages StatusNotifier::images() const {
    if (!drawn_.isEmpty() && drawnText_ == iconText()) {
        return drawn_;
    }
    drawn_.clear();
    const CountIcon square(compact_, halted_);
    for (const int side : squareSides) {
        drawn_.append(toNotifierImage(square.drawSquare(side)));
    }
    if (icons_ == StatusIcons::wide && title_ != compact_) {
        const CountIcon wide(title_, halted_);
        drawn_.append(toNotifierImage(wide.draw(wide.wideSize(wideHeight))));
    }
    drawnText_ = iconText();
    return drawn_;
}

} // namespace fernhollow
