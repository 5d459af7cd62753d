#pragma once

#include "Presentation/AppList.h"
#include "Support/NumberText.h"

#include <QAbstractListModel>
#include <QColor>
#include <QString>

#include <cstdint>
#include <string>
#include <vector>

namespace fernhollow {

/// The rows of an AppListView. Of new items it announces only the rows that they change, so that with each
/// press one row is drawn and not the list. Owned by its view.
class AppListModel : public QAbstractListModel {
public:
    struct Row {
        std::string bundleId;
        std::string appName;
        std::int64_t count = -1;
        QString name; ///< what is shown, this and below
        QString countText;
        QString percentageText; ///< empty without one
        QColor color;
    };

    using QAbstractListModel::QAbstractListModel;

    void setItems(const std::vector<AppDisplayItem>& items);

    const Row& row(const QModelIndex& index) const { return rows_[static_cast<std::size_t>(index.row())]; }

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

private:
    bool update(Row& row, const AppDisplayItem& item) const;

    std::vector<Row> rows_;
    NumberText numberText_;
};

} // namespace fernhollow
