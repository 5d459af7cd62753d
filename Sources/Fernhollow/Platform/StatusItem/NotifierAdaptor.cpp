#include "Platform/StatusItem/NotifierAdaptor.h"

#include "Platform/StatusItem/CompactCount.h"
#include "Platform/StatusItem/StatusNotifier.h"
#include "Support/ApplicationIdentity.h"

#include <utility>

namespace fernhollow {

NotifierAdaptor::NotifierAdaptor(StatusNotifier* notifier)
    : QDBusAbstractAdaptor(notifier), notifier_(*notifier) {}

QString NotifierAdaptor::id() const {
    return QString::fromUtf8(applicationIdentifier.data(), applicationIdentifier.size());
}

QString NotifierAdaptor::title() const {
    return notifier_.title();
}

NotifierImages NotifierAdaptor::iconPixmap() const {
    return notifier_.images();
}

NotifierToolTip NotifierAdaptor::toolTip() const {
    return {{}, {}, countToolTip(notifier_.title()), notifier_.note()};
}

QDBusObjectPath NotifierAdaptor::menu() const {
    return QDBusObjectPath(StatusNotifier::menuPath());
}

void NotifierAdaptor::ProvideXdgActivationToken(const QString& token) {
    activationToken_ = token.toUtf8();
}

void NotifierAdaptor::click() {
    Q_EMIT notifier_.clicked(std::exchange(activationToken_, {}));
}

void NotifierAdaptor::Activate(int, int) {
    click();
}

void NotifierAdaptor::SecondaryActivate(int, int) {
    click();
}

void NotifierAdaptor::ContextMenu(int, int) {
    click();
}

void NotifierAdaptor::Scroll(int, const QString&) {}

} // namespace fernhollow
