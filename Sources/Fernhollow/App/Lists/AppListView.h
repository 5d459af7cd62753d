#pragma once

#include "App/Lists/AppListDelegate.h"

#include <QElapsedTimer>
#include <QListView>

namespace fernhollow {

/// A scrolling list of applications, each with its colour and its count, for the eye, the keyboard and a
/// screen reader. It may be given its items with each press.
class AppListView : public QListView {
    Q_OBJECT

public:
    explicit AppListView(const AppListDelegate::Style& style, QWidget* parent = nullptr);

    void setItems(const std::vector<AppDisplayItem>& items);
    /// What an empty list says instead of rows.
    void setEmptyText(const QString& text);

    int heightOf(int rows) const;
    /// No higher than it has to be: a list that shall grow gets the room from its layout.
    QSize sizeHint() const override { return {QListView::sizeHint().width(), minimumHeight()}; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                     const QList<int>& roles) override;

private:
    void sayWhetherEmpty();

    AppListModel model_;
    AppListDelegate delegate_;
    QString emptyText_;
    QElapsedTimer sinceWheel_; // moved this list
};

/// What a list says that is empty: because no name holds `search`, or because there was no press.
QString emptyListText(const QString& search);

} // namespace fernhollow
