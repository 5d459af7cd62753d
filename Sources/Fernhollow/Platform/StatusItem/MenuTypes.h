#pragma once

#include <QDBusArgument>
#include <QDBusVariant>
#include <QList>
#include <QMetaType>
#include <QStringList>
#include <QVariantMap>

namespace fernhollow {

// The values of the com.canonical.dbusmenu protocol.

/// "(ia{sv}av)": an item, its properties, and the items below it, each as one of these.
struct MenuLayout {
    int id = 0;
    QVariantMap properties;
    QList<QDBusVariant> children;
};

/// "(ia{sv})"
struct MenuProperties {
    int id = 0;
    QVariantMap properties;
};

/// "(ias)": the names of properties that an item no longer has.
struct MenuRemovals {
    int id = 0;
    QStringList names;
};

/// "(isvu)": what happened to an item, with data and a time that nothing here needs.
struct MenuEvent {
    int id = 0;
    QString type;
    QDBusVariant data;
    uint time = 0;
};

QDBusArgument& operator<<(QDBusArgument& argument, const MenuLayout& layout);
const QDBusArgument& operator>>(const QDBusArgument& argument, MenuLayout& layout);
QDBusArgument& operator<<(QDBusArgument& argument, const MenuProperties& properties);
const QDBusArgument& operator>>(const QDBusArgument& argument, MenuProperties& properties);
QDBusArgument& operator<<(QDBusArgument& argument, const MenuRemovals& removals);
const QDBusArgument& operator>>(const QDBusArgument& argument, MenuRemovals& removals);
QDBusArgument& operator<<(QDBusArgument& argument, const MenuEvent& event);
const QDBusArgument& operator>>(const QDBusArgument& argument, MenuEvent& event);

/// Once before any of these types travels.
void registerMenuTypes();

} // namespace fernhollow

Q_DECLARE_METATYPE(fernhollow::MenuLayout)
Q_DECLARE_METATYPE(fernhollow::MenuProperties)
Q_DECLARE_METATYPE(fernhollow::MenuRemovals)
Q_DECLARE_METATYPE(fernhollow::MenuEvent)
