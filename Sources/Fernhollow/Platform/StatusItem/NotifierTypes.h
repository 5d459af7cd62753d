#pragma once

#include <QByteArray>
#include <QDBusArgument>
#include <QList>
#include <QMetaType>
#include <QString>

namespace fernhollow {

/// One picture as the StatusNotifierItem protocol carries it, "(iiay)": ARGB32 in network byte order.
struct NotifierImage {
    int width = 0;
    int height = 0;
    QByteArray pixels;
};
using NotifierImages = QList<NotifierImage>;

/// "(sa(iiay)ss)"
struct NotifierToolTip {
    QString iconName;
    NotifierImages images;
    QString title;
    QString description;
};

QDBusArgument& operator<<(QDBusArgument& argument, const NotifierImage& image);
const QDBusArgument& operator>>(const QDBusArgument& argument, NotifierImage& image);
QDBusArgument& operator<<(QDBusArgument& argument, const NotifierToolTip& toolTip);
const QDBusArgument& operator>>(const QDBusArgument& argument, NotifierToolTip& toolTip);

/// Once before any of these types travels.
void registerNotifierTypes();

} // namespace fernhollow

Q_DECLARE_METATYPE(fernhollow::NotifierImage)
Q_DECLARE_METATYPE(fernhollow::NotifierToolTip)
