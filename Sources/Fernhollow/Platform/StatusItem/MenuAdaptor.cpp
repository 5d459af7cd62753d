#include "Platform/StatusItem/MenuAdaptor.h"

#include <QGuiApplication>
#include <QTimer>

#include <utility>

namespace fernhollow {
namespace {

constexpr int root = 0;

/// In a label of the protocol an underscore marks the next letter as its key.
QString escaped(QString label) {
    return label.replace(u'_', QStringLiteral("__"));
}

} // namespace

MenuAdaptor::MenuAdaptor(QObject* exported) : QDBusAbstractAdaptor(exported) {
    registerMenuTypes();
}

void MenuAdaptor::setMenu(StatusMenu menu) {
    std::swap(menu_, menu);
    const StatusMenu& before = menu;
    if (menu_.size() != before.size()) {
        Q_EMIT LayoutUpdated(++revision_, root);
        return;
    }
    QList<MenuProperties> changed;
    for (std::size_t i = 0; i < menu_.size(); ++i) {
        if (menu_[i].label != before[i].label) {
            const int id = static_cast<int>(i) + 1;
            changed.append({id, properties(id, {})});
        }
    }
    if (!changed.isEmpty()) {
        Q_EMIT ItemsPropertiesUpdated(changed, {});
    }
}

QString MenuAdaptor::textDirection() const {
    return QGuiApplication::isRightToLeft() ? QStringLiteral("rtl") : QStringLiteral("ltr");
}

/// Those named; all of them where none is.
QVariantMap MenuAdaptor::properties(int id, const QStringList& names) const {
    QVariantMap all;
    if (id == root) {
        all[QStringLiteral("children-display")] = QStringLiteral("submenu");
    } else {
        all[QStringLiteral("label")] = escaped(menu_[static_cast<std::size_t>(id) - 1].label);
    }
    for (auto property = all.begin(); !names.isEmpty() && property != all.end();) {
        property = names.contains(property.key()) ? std::next(property) : all.erase(property);
    }
    return all;
}

uint MenuAdaptor::GetLayout(int parentId, int recursionDepth, const QStringList& propertyNames,
                            MenuLayout& layout) {
    layout.id = parentId;
    if (parentId != root && !isEntry(parentId)) {
        return revision_;
    }
    layout.properties = properties(parentId, propertyNames);
    if (parentId == root && recursionDepth != 0) { // a negative depth is any
        for (int id = 1; isEntry(id); ++id) {
            const MenuLayout child{id, properties(id, propertyNames), {}};
            layout.children.append(QDBusVariant(QVariant::fromValue(child)));
        }
    }
    return revision_;
}

QList<MenuProperties> MenuAdaptor::GetGroupProperties(const QList<int>& ids,
                                                      const QStringList& propertyNames) {
    QList<MenuProperties> result;
    if (ids.isEmpty()) { // stands for all
        for (int id = root; id == root || isEntry(id); ++id) {
            result.append({id, properties(id, propertyNames)});
        }
    }
    for (const int id : ids) {
        if (id == root || isEntry(id)) {
            result.append({id, properties(id, propertyNames)});
        }
    }
    return result;
}

QDBusVariant MenuAdaptor::GetProperty(int id, const QString& name) {
    const bool exists = id == root || isEntry(id);
    const QVariant value = exists ? properties(id, {}).value(name) : QVariant();
    return QDBusVariant(value.isValid() ? value : QVariant(QString())); // a call is always answered
}

// What an entry does may take the menu or the bus connection away, so the host gets its answer first.
void MenuAdaptor::Event(int id, const QString& eventId, const QDBusVariant&, uint) {
    if (eventId == QLatin1StringView("clicked") && isEntry(id)) {
        QTimer::singleShot(0, this, menu_[static_cast<std::size_t>(id) - 1].perform);
    }
}

QList<int> MenuAdaptor::EventGroup(const QList<MenuEvent>& events) {
    QList<int> unknown;
    for (const MenuEvent& event : events) {
        if (event.id != root && !isEntry(event.id)) {
            unknown.append(event.id);
        }
        Event(event.id, event.type, event.data, event.time);
    }
    return unknown;
}

bool MenuAdaptor::AboutToShow(int) {
    return false; // hosts have heard of every change
}

QList<int> MenuAdaptor::AboutToShowGroup(const QList<int>& ids, QList<int>& idErrors) {
    for (const int id : ids) {
        if (id != root && !isEntry(id)) {
            idErrors.append(id);
        }
    }
    return {};
}

} // namespace fernhollow
