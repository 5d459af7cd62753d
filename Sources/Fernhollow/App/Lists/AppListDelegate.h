#pragma once

#include "App/Lists/AppListModel.h"

#include <QAbstractItemDelegate>
#include <QFont>
#include <QRect>

namespace fernhollow {

/// Draws one application of an AppListView: its colour, its name, its share and its count.
class AppListDelegate : public QAbstractItemDelegate {
public:
    /// How the rows of a list look.
    struct Style {
        double points = 13; ///< of the texts
        QFont::Weight countWeight = QFont::Normal;
        int verticalPadding = 4;
        QColor background;
    };

    explicit AppListDelegate(const Style& style, QObject* parent = nullptr);

    /// The room that all rows keep free for the widest count, so that the shares stand below each other.
    /// True when it has changed.
    bool reserve(const QString& widestCount);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override;

private:
    struct Places {
        QRect background;
        QRect circle;
        QRect name;
        QRect percentage;
        QRect count;
    };
    Places places(const QStyleOptionViewItem& option, const AppListModel::Row& row) const;

    QFont nameFont_;
    QFont percentageFont_;
    QFont countFont_;
    int verticalPadding_;
    QColor background_;
    int countWidth_ = 0;
    int percentageWidth_;
};

} // namespace fernhollow
