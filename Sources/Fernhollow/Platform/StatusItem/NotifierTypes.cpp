#include "Platform/StatusItem/NotifierTypes.h"

#include <QDBusMetaType>

namespace fernhollow {

QDBusArgument& operator<<(QDBusArgument& argument, const NotifierImage& image) {
    argument.beginStructure();
    argument << image.width << image.height << image.pixels;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, NotifierImage& image) {
    argument.beginStructure();
    argument >> image.width >> image.height >> image.pixels;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const NotifierToolTip& toolTip) {
    argument.beginStructure();
    argument << toolTip.iconName << toolTip.images << toolTip.title << toolTip.description;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, NotifierToolTip& toolTip) {
    argument.beginStructure();
    argument >> toolTip.iconName >> toolTip.images >> toolTip.title >> toolTip.description;
    argument.endStructure();
    return argument;
}

void registerNotifierTypes() {
    qDBusRegisterMetaType<NotifierImage>();
    qDBusRegisterMetaType<NotifierImages>();
    qDBusRegisterMetaType<NotifierToolTip>();
}

} // namespace fernhollow
