#include "Platform/StatusItem/NotifierAdaptor.h"

#include "Platform/StatusItem/StatusNotifier.h"
#include "Support/ApplicationIdentity.h"

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
    return {{}, {}, notifier_.title(), notifier_.note()};
}

void NotifierAdaptor::Activate(int, int) {
    Q_EMIT notifier_.clicked();
}

void NotifierAdaptor::SecondaryActivate(int, int) {
    Q_EMIT notifier_.clicked();
}

void NotifierAdaptor::ContextMenu(int, int) {
    Q_EMIT notifier_.clicked();
}

void NotifierAdaptor::Scroll(int, const QString&) {}

} // namespace fernhollow
