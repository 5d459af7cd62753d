#include "App/Footer/DevicesPopover.h"

#include "App/Widgets/ElidedLabel.h"
#include "App/Widgets/Symbol.h"
#include "App/Widgets/Theme.h"
#include "Model/DeviceInfo.h"

#include <QApplication>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QScrollArea>
#include <QScrollBar>
#include <QShortcut>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>

namespace fernhollow {
namespace {

constexpr int padding = 12;
constexpr int spacing = 8;
constexpr int rowPadding = 2;
constexpr int rowSpacing = 8;
constexpr int lineSpacing = 2;
constexpr int narrowest = 200;
constexpr int widest = 320; // the narrowest window keeps room at its sides
constexpr int gap = 4;      // to the anchor and to the top of the window
constexpr int scrollBarGap = 6;
constexpr int cardEdge = 12; // of the cards behind it

QLabel* makeLabel(const QString& text, const QColor& color, Theme::TextStyle style,
                  QFont::Weight weight = QFont::Normal) {
    auto* label = new QLabel(text);
    label->setTextFormat(Qt::PlainText);
    label->setFont(Theme::font(style, weight));
    Theme::setTextColor(*label, color);
    return label;
}

QScrollArea* makeScrollArea(QWidget* content) {
    auto* scroll = new QScrollArea;
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setWidgetResizable(true);
    scroll->setWidget(content);
    scroll->viewport()->setAutoFillBackground(false);
    content->setAutoFillBackground(false);
    return scroll;
}

} // namespace

DevicesPopover::DevicesPopover(const Clock& clock, QWidget* anchor)
    : QFrame(anchor->window()), clock_(clock), anchor_(anchor), list_(new QVBoxLayout),
      empty_(makeLabel(QStringLiteral("No devices found"), Theme::tertiary, Theme::TextStyle::caption)) {
    const QString title = QStringLiteral("Connected Devices");
    setAttribute(Qt::WA_DeleteOnClose);
    setProperty("popover", true);
    setAccessibleName(title);

    auto* content = new QWidget;
    content->setLayout(list_);
    list_->setContentsMargins(0, 0, 0, 0);
    list_->setSpacing(spacing);
    list_->addWidget(empty_);
    scroll_ = makeScrollArea(content);
    scroll_->setAccessibleName(title);
    scroll_->setFixedHeight(0); // until place() knows better
    setFocusProxy(scroll_);
    scroll_->setFocusPolicy(Qt::StrongFocus);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(padding, padding, padding, padding);
    layout->setSpacing(spacing);
    layout->addWidget(makeLabel(title, Theme::secondary, Theme::TextStyle::caption, QFont::DemiBold));
    layout->addWidget(Theme::makeDivider());
    layout->addWidget(scroll_);

    connect(new QShortcut(QKeySequence(Qt::Key_Escape), this), &QShortcut::activated, this, &QWidget::close);
    qApp->installEventFilter(this);
}

void DevicesPopover::keepOrder(std::vector<DeviceInfo>& devices) {
    auto rest = devices.begin(); // of those that have no place yet
    for (const std::string& id : order_) {
        const auto device =
            std::find_if(rest, devices.end(), [&](const auto& one) { return one.device_id == id; });
        if (device != devices.end()) {
            std::rotate(rest, device, device + 1);
            ++rest;
        }
    }
    order_.clear();
    std::ranges::transform(devices, std::back_inserter(order_), &DeviceInfo::device_id);
}

void DevicesPopover::setDevices(std::vector<DeviceInfo> devices, const std::string& thisDevice) {
    keepOrder(devices);
    while (rows_.size() > devices.size()) {
        delete rows_.back().widget;
        rows_.pop_back();
    }
    while (rows_.size() < devices.size()) {
        rows_.push_back(addRow());
    }
    empty_->setVisible(devices.empty());

    for (std::size_t i = 0; i < devices.size(); ++i) {
        const QString name = QString::fromStdString(devices[i].device_name).simplified();
        rows_[i].name->setFullText(name.isEmpty() ? QStringLiteral("Unnamed device") : name);
        rows_[i].mark->setVisible(devices[i].device_id == thisDevice);
        const Instant lastSeen = devices[i].lastSeenDate(clock_);
        const Instant now = clock_.now(); // read second, so that an unknown time is not ahead of it
        rows_[i].lastSeen->setText(QString::fromStdString(relativeTime_(lastSeen, now)));
    }
    place();
}

DevicesPopover::Row DevicesPopover::addRow() {
    const QFont font = Theme::font(Theme::TextStyle::caption);
    const int side = QFontMetrics(font).height();
    const Row row{new QWidget, new ElidedLabel(Qt::ElideRight),
                  makeLabel({}, Theme::tertiary, Theme::TextStyle::caption2),
                  makeLabel(QStringLiteral("This device"), Theme::tint, Theme::TextStyle::caption2)};
    row.name->setFont(font);

    auto* lines = new QVBoxLayout;
    lines->setSpacing(lineSpacing);
    lines->addWidget(row.name);
    lines->addWidget(row.lastSeen, 0, Qt::AlignLeft); // in any script

    auto* columns = new QHBoxLayout(row.widget);
    columns->setContentsMargins(0, rowPadding, 0, rowPadding);
    columns->setSpacing(rowSpacing);
    columns->addWidget(new Symbol(QStringLiteral("display"), Theme::secondary, {side, side}));
    columns->addLayout(lines, 1);
    columns->addWidget(row.mark);
    list_->addWidget(row.widget);
    row.widget->show();
    return row;
}

// The rows scroll in what room there is. Nothing grows on the way to its size: it would scroll back.
void DevicesPopover::place() {
    for (const Row& row : rows_) { // Qt's layouts notice new texts only later
        row.widget->layout()->invalidate();
        row.widget->layout()->activate();
    }
    list_->activate();
    const QPoint corner = anchor_->mapTo(parentWidget(), QPoint());
    const QSize rows = list_->totalSizeHint() - QSize(list_->contentsMargins().right(), 0);
    const int rest = layout()->totalSizeHint().height() - scroll_->minimumHeight();
    const int room = corner.y() - 2 * gap - rest;
    const int shown = std::max(std::min(rows.height(), room), 0);
    scroll_->setFixedHeight(shown);
    const bool scrolls = shown < rows.height();
    const int scrollBar = scrolls ? scrollBarGap + scroll_->verticalScrollBar()->sizeHint().width() : 0;
    list_->setContentsMargins(0, 0, scrolls ? scrollBarGap : 0, 0);
    const int sides = 2 * padding + contentsMargins().left() + contentsMargins().right();
    scroll_->setMinimumWidth(std::min(rows.width() + scrollBar, widest - sides));

    const QSize hint = layout()->totalSizeHint();
    const QSize size(std::clamp(hint.width(), narrowest, widest), shown + rest);
    setGeometry({{cardEdge, corner.y() - gap - size.height()}, size});
}

void DevicesPopover::closeEvent(QCloseEvent* event) {
    if (isAncestorOf(QApplication::focusWidget())) {
        anchor_->setFocus(Qt::PopupFocusReason);
    }
    QFrame::closeEvent(event);
    Q_EMIT closed();
}

void DevicesPopover::mousePressEvent(QMouseEvent* event) {
    event->accept(); // not for what lies behind it
}

bool DevicesPopover::isOutside(QObject* widget) const {
    const auto* pressed = qobject_cast<QWidget*>(widget);
    return pressed && pressed != this && !isAncestorOf(pressed) && pressed != anchor_ &&
           !anchor_->isAncestorOf(pressed);
}

bool DevicesPopover::eventFilter(QObject* watched, QEvent* event) {
    const bool isWindow = watched == window();
    if (isWindow && event->type() == QEvent::Resize) {
        QTimer::singleShot(0, this, &DevicesPopover::place); // once the anchor has its new place
    } else if ((event->type() == QEvent::MouseButtonPress && isOutside(watched)) ||
               (event->type() == QEvent::WindowDeactivate && isWindow && !window()->isHidden())) {
        close();
    }
    return QFrame::eventFilter(watched, event);
}

} // namespace fernhollow
