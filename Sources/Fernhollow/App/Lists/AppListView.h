#pragma once

#include "App/Lists/AppListDelegate.h"

#include <QListView>

namespace fernhollow {

/// A scrolling list of applications, each with its colour and its count, for the eye, the keyboard and a
/// screen reader. It may be given its items with each press.
class AppListView : public QListView {
    Q_OBJECT

public:
    explicit AppListView(const AppListDelegate::Style& style, QWidget* parent = nullptr);

    void setItems(const std::vector<AppDisplayItem>& items);

protected:
    void dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                     const QList<int>& roles) override;

private:
    AppListModel model_;
    AppListDelegate delegate_;
};

} // namespace fernhollow
