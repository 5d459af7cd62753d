#include "App/Widgets/FlowLayout.h"

#include <QStyle>
#include <QWidget>

#include <algorithm>

namespace fernhollow {

FlowLayout::FlowLayout(int spacing, Columns columns) : columns_(columns) {
    setContentsMargins(0, 0, 0, 0);
    setSpacing(spacing);
}

FlowLayout::~FlowLayout() = default;

void FlowLayout::addItem(QLayoutItem* item) {
    items_.emplace_back(item);
}

QLayoutItem* FlowLayout::itemAt(int index) const {
    return index >= 0 && index < count() ? items_[static_cast<std::size_t>(index)].get() : nullptr;
}

QLayoutItem* FlowLayout::takeAt(int index) {
    if (index < 0 || index >= count()) {
        return nullptr;
    }
    QLayoutItem* item = items_[static_cast<std::size_t>(index)].release();
    items_.erase(items_.begin() + index);
    return item;
}

QSize FlowLayout::largest() const {
    QSize size(0, 0);
    for (const auto& item : items_) {
        size = size.expandedTo(item->sizeHint());
    }
    return size;
}

/// Of equal columns: as many as fit.
int FlowLayout::columnWidth(int width) const {
    const int widest = std::max(1, largest().width());
    const int fitting = (width + spacing()) / (widest + spacing());
    const int columns = std::clamp(fitting, 1, std::max(1, count()));
    return (width - (columns - 1) * spacing()) / columns;
}

std::vector<QRect> FlowLayout::places(int width) const {
    const int column = columns_ == Columns::equal ? columnWidth(width) : 0;
    std::vector<QRect> places;
    QPoint at;
    int lineHeight = 0;
    for (const auto& item : items_) {
        QSize size = item->isEmpty() ? QSize(0, 0) : item->sizeHint();
        size.setWidth(std::min(std::max(size.width(), column), width));
        if (at.x() > 0 && at.x() + size.width() > width) {
            at = {0, at.y() + lineHeight + spacing()};
            lineHeight = 0;
        }
        places.emplace_back(at, size);
        at.rx() += size.width() + (size.isEmpty() ? 0 : spacing());
        lineHeight = std::max(lineHeight, size.height());
    }
    return places;
}

int FlowLayout::heightForWidth(int width) const {
    int height = 0;
    for (const QRect& place : places(width)) {
        height = std::max(height, place.bottom() + 1);
    }
    return height;
}

QSize FlowLayout::sizeHint() const {
    QSize size(-spacing(), 0);
    for (const auto& item : items_) {
        const QSize hint = item->sizeHint();
        size = {size.width() + hint.width() + spacing(), std::max(size.height(), hint.height())};
    }
    return size.expandedTo({0, 0});
}

QSize FlowLayout::minimumSize() const {
    return largest();
}

void FlowLayout::setGeometry(const QRect& rect) {
    QLayout::setGeometry(rect);
    const auto direction = parentWidget() ? parentWidget()->layoutDirection() : Qt::LeftToRight;
    const auto at = places(rect.width());
    for (std::size_t i = 0; i < items_.size(); ++i) {
        items_[i]->setGeometry(QStyle::visualRect(direction, rect, at[i].translated(rect.topLeft())));
    }
}

} // namespace fernhollow
