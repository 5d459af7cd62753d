#include "App/Lists/AppListView.h"

#include "App/Widgets/Theme.h"

#include <QPainter>
#include <QWheelEvent>

namespace fernhollow {
namespace {

constexpr int wheelPause = 400; // ms; after it a turn of the wheel is a new one
constexpr int emptyPadding = 8;

} // namespace

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
    const bool hasLength = model_.rowCount() == static_cast<int>(items.size());
    model_.setItems(items);
    if (!hasLength) {
        sayWhetherEmpty();
    }
    // In descending count the first one is the widest.
    if (!items.empty() && delegate_.reserve(model_.row(model_.index(0)).countText)) {
        viewport()->update();
    }
}

void AppListView::setEmptyText(const QString& text) {
    if (std::exchange(emptyText_, text) != text) {
        sayWhetherEmpty();
    }
}

void AppListView::sayWhetherEmpty() {
    setAccessibleDescription(model_.rowCount() == 0 ? emptyText_ : QString());
    viewport()->update();
}

int AppListView::heightOf(int rows) const {
    return delegate_.sizeHint({}, {}).height() * rows;
}

void AppListView::paintEvent(QPaintEvent* event) {
    QListView::paintEvent(event);
    if (model_.rowCount() == 0) {
        QPainter painter(viewport());
        painter.setFont(Theme::font(Theme::TextStyle::callout));
        painter.setPen(Theme::tertiary);
        const QRect room =
            viewport()->rect().adjusted(emptyPadding, emptyPadding, -emptyPadding, -emptyPadding);
        painter.drawText(room, Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, emptyText_);
    }
}

// A turn of the wheel that moved the list ends with it: what lies around the list stays where it is until the
// next turn.
void AppListView::wheelEvent(QWheelEvent* event) {
    QListView::wheelEvent(event);
    if (event->isAccepted() || (sinceWheel_.isValid() && sinceWheel_.elapsed() < wheelPause)) {
        sinceWheel_.start();
        event->accept();
    }
}

// A list would lay out all its rows again, which all have the same height.
void AppListView::dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                              const QList<int>& roles) {
    QAbstractItemView::dataChanged(topLeft, bottomRight, roles); // NOLINT(bugprone-parent-virtual-call)
}

QString emptyListText(const QString& search) {
    return search.isEmpty() ? QStringLiteral("No key presses")
                            : QStringLiteral("No app is called “%1”").arg(search.simplified());
}

} // namespace fernhollow
