#include "App/Widgets/AccessibleRole.h"

#include <QAccessibleWidget>
#include <QVariant>
#include <QWidget>

namespace fernhollow {
namespace {

constexpr const char* property = "fernhollowAccessibleRole";

QAccessibleInterface* makeInterface(const QString&, QObject* object) {
    const QVariant role = object->property(property);
    if (!role.isValid() || !object->isWidgetType()) {
        return nullptr; // the toolkit's own
    }
    return new QAccessibleWidget(static_cast<QWidget*>(object), static_cast<QAccessible::Role>(role.toInt()));
}

} // namespace

void setAccessibleRole(QWidget& widget, QAccessible::Role role) {
    static const bool isInstalled = [] {
        QAccessible::installFactory(makeInterface);
        return true;
    }();
    Q_UNUSED(isInstalled)
    widget.setProperty(property, static_cast<int>(role));
}

} // namespace fernhollow
