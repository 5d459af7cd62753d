#include "App/Lists/AppListView.h"

namespace fernhollow {

AppListView::AppListView(const AppListDelegate::Style& style, QWidget* parent)
    : QListView(parent), delegate_(style) {
    setAccessibleName(QStringLiteral("Apps Breakdown"));
    setModel(&model_);
    setItemDelegate(&delegate_);
    setFrameShape(QFrame::NoFrame);
    viewport()->setAutoFillBackground(false);
    setUniformItemSizes(true);
    setSelectionMode(NoSelection);
    setEditTriggers(NoEditTriggers);
    setTabKeyNavigation(false);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollMode(ScrollPerPixel);
}

void AppListView::setItems(const std::vector<AppDisplayItem>& items) {
    model_.setItems(items);
    // In descending count the first one is the widest.
    if (!items.empty() && delegate_.reserve(model_.row(model_.index(0)).countText)) {
        viewport()->update();
    }
}

// A list would lay out all its rows again, which all have the same height.
void AppListView::dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                              const QList<int>& roles) {
    QAbstractItemView::dataChanged(topLeft, bottomRight, roles); // NOLINT(bugprone-parent-virtual-call)
}

} // namespace fernhollow
