#include "Platform/StatusItem/MenuTypes.h"

#include <QDBusMetaType>

namespace fernhollow {
namespace {

template<class... Fields>
QDBusArgument& write(QDBusArgument& argument, const Fields&... fields) {
    argument.beginStructure();
    (argument << ... << fields);
    argument.endStructure();
    return argument;
}

template<class... Fields>
const QDBusArgument& read(const QDBusArgument& argument, Fields&... fields) {
    argument.beginStructure();
    (argument >> ... >> fields);
    argument.endStructure();
    return argument;
}

} // namespace

QDBusArgument& operator<<(QDBusArgument& argument, const MenuLayout& layout) {
    return write(argument, layout.id, layout.properties, layout.children);
}

const QDBusArgument& operator>>(const QDBusArgument& argument, MenuLayout& layout) {
    return read(argument, layout.id, layout.properties, layout.children);
}

QDBusArgument& operator<<(QDBusArgument& argument, const MenuProperties& properties) {
    return write(argument, properties.id, properties.properties);
}

const QDBusArgument& operator>>(const QDBusArgument& argument, MenuProperties& properties) {
    return read(argument, properties.id, properties.properties);
}

QDBusArgument& operator<<(QDBusArgument& argument, const MenuRemovals& removals) {
    return write(argument, removals.id, removals.names);
}

const QDBusArgument& operator>>(const QDBusArgument& argument, MenuRemovals& removals) {
    return read(argument, removals.id, removals.names);
}

QDBusArgument& operator<<(QDBusArgument& argument, const MenuEvent& event) {
    return write(argument, event.id, event.type, event.data, event.time);
}

const QDBusArgument& operator>>(const QDBusArgument& argument, MenuEvent& event) {
    return read(argument, event.id, event.type, event.data, event.time);
}

void registerMenuTypes() {
    qDBusRegisterMetaType<QList<QDBusVariant>>();
    qDBusRegisterMetaType<MenuLayout>();
    qDBusRegisterMetaType<MenuProperties>();
    qDBusRegisterMetaType<QList<MenuProperties>>();
    qDBusRegisterMetaType<MenuRemovals>();
    qDBusRegisterMetaType<QList<MenuRemovals>>();
    qDBusRegisterMetaType<MenuEvent>();
    qDBusRegisterMetaType<QList<MenuEvent>>();
}

} // namespace fernhollow
