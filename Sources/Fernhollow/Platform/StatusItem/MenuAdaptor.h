#pragma once

#include "Platform/StatusItem/MenuTypes.h"
#include "Platform/StatusItem/StatusMenu.h"

#include <QDBusAbstractAdaptor>

namespace fernhollow {

/// The item's menu as hosts see it on the session bus, by the com.canonical.dbusmenu protocol: one list of
/// entries below the root. An entry's identifier is its place, from 1 on; the root has 0.
///
/// The signatures name no alias: the toolkit looks a type up by its own name.
/// Owned by the object that it is exported with; Qt calls it on the main thread when a host asks. A host that
/// asks for an entry that does not exist gets nothing, or an error where the protocol has one.
class MenuAdaptor : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.canonical.dbusmenu")
    Q_PROPERTY(uint Version READ version)
    Q_PROPERTY(QString TextDirection READ textDirection)
    Q_PROPERTY(QString Status READ status)
    Q_PROPERTY(QStringList IconThemePath READ iconThemePath)

public:
    explicit MenuAdaptor(QObject* exported);

    /// Hosts hear of what looks different.
    void setMenu(StatusMenu menu);

    uint version() const { return 3; }
    QString textDirection() const;
    QString status() const { return QStringLiteral("normal"); }
    QStringList iconThemePath() const { return {}; }

public Q_SLOTS:
    uint GetLayout(int parentId, int recursionDepth, const QStringList& propertyNames,
                   fernhollow::MenuLayout& layout);
    QList<fernhollow::MenuProperties> GetGroupProperties(const QList<int>& ids,
                                                         const QStringList& propertyNames);
    QDBusVariant GetProperty(int id, const QString& name);
    void Event(int id, const QString& eventId, const QDBusVariant& data, uint timestamp);
    QList<int> EventGroup(const QList<fernhollow::MenuEvent>& events);
    bool AboutToShow(int id);
    QList<int> AboutToShowGroup(const QList<int>& ids, QList<int>& idErrors);

Q_SIGNALS:
    void ItemsPropertiesUpdated(const QList<fernhollow::MenuProperties>& updatedProps,
                                const QList<fernhollow::MenuRemovals>& removedProps);
    void LayoutUpdated(uint revision, int parent);

private:
    bool isEntry(int id) const { return id >= 1 && id <= static_cast<int>(menu_.size()); }
    QVariantMap properties(int id, const QStringList& names) const;

    StatusMenu menu_;
    uint revision_ = 1; // of the layout
};

} // namespace fernhollow
