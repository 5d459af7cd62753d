#include "App/Lists/AppListModel.h"

#include "App/Widgets/AppColor.h"
#include "Presentation/FixedDecimals.h"

#include <algorithm>

namespace fernhollow {

void AppListModel::setItems(const std::vector<AppDisplayItem>& items) {
    const std::size_t kept = std::min(rows_.size(), items.size());
    if (kept < rows_.size()) {
        beginRemoveRows({}, static_cast<int>(kept), static_cast<int>(rows_.size()) - 1);
        rows_.resize(kept);
        endRemoveRows();
    }
    for (std::size_t i = 0; i < kept; ++i) {
        if (update(rows_[i], items[i])) {
            const auto changed = index(static_cast<int>(i));
            Q_EMIT dataChanged(changed, changed);
        }
    }
    if (kept < items.size()) {
        beginInsertRows({}, static_cast<int>(kept), static_cast<int>(items.size()) - 1);
        rows_.resize(items.size());
        for (std::size_t i = kept; i < items.size(); ++i) {
            update(rows_[i], items[i]);
        }
        endInsertRows();
    }
}

bool AppListModel::update(Row& row, const AppDisplayItem& item) const {
    bool hasChanged = false;
    if (row.bundleId != item.bundleId || row.appName != item.appName) {
        row.bundleId = item.bundleId;
        row.appName = item.appName;
        row.name = QString::fromStdString(row.appName).simplified();
        if (row.name.isEmpty()) {
            row.name = QString::fromStdString(row.bundleId).simplified();
        }
        row.color = colorOf(item.bundleId);
        hasChanged = true;
    }
    if (row.count != item.count) {
        row.count = item.count;
        row.countText = QString::fromStdString(numberText_(item.count));
        hasChanged = true;
    }
    const QString percentage =
        item.percentage ? QString::fromStdString(fixedDecimals(*item.percentage, 1)) + u'%' : QString();
    if (row.percentageText != percentage) {
        row.percentageText = percentage;
        hasChanged = true;
    }
    return hasChanged;
}

int AppListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

QVariant AppListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) {
        return {};
    }
    const Row& shown = row(index);
    if (role == Qt::DisplayRole) {
        return shown.name;
    }
    if (role == Qt::AccessibleTextRole) {
        const QString text =
            shown.name + QStringLiteral(", ") + shown.countText + QStringLiteral(" key presses");
        return shown.percentageText.isEmpty() ? text : text + QStringLiteral(", ") + shown.percentageText;
    }
    return {};
}

} // namespace fernhollow
