#include "App/Charts/BarChart.h"

#include "App/Charts/CountAxis.h"
#include "App/Charts/StackedBars.h"
#include "App/Widgets/AccessibleRole.h"
#include "App/Widgets/Theme.h"

#include <QEvent>
#include <QMouseEvent>

#include <algorithm>
#include <cmath>
#include <unordered_map>

namespace fernhollow {
namespace {

constexpr int labelGap = 4; // between the plot and the labels
constexpr int edge = 2;     // where there is no label

QFont labelFont() {
    return Theme::font(Theme::TextStyle::caption2);
}

void setUp(QCPAxis& axis, const QString& title) {
    axis.setVisible(true);
    axis.setBasePen(Qt::NoPen);
    axis.setTickPen(Qt::NoPen);
    axis.setSubTicks(false);
    axis.setTickLength(0);
    axis.setTickLabelPadding(labelGap);
    axis.setTickLabelColor(Theme::tertiary);
    axis.setLabelColor(Theme::tertiary);
    axis.setLabelPadding(labelGap);
    axis.setLabel(title);
    axis.grid()->setPen(QPen(Theme::separator, 1));
    axis.grid()->setZeroLinePen(QPen(Theme::separator, 1));
}

} // namespace

BarChart::BarChart(Style style, QWidget* parent)
    : QWidget(parent), style_(std::move(style)), plot_(new QCustomPlot(this)),
      bars_(new StackedBars(plot_->xAxis, plot_->yAxis)) {
    plot_->setAttribute(Qt::WA_TransparentForMouseEvents); // it would keep the wheel for itself
    plot_->setFocusPolicy(Qt::NoFocus);
    plot_->setBackground(QBrush(Theme::control)); // it paints all of itself
    plot_->axisRect()->setAutoMargins(QCP::msNone);
    setUp(*plot_->xAxis, style_.columnTitle);
    setUp(*plot_->yAxis, style_.countTitle);
    plot_->yAxis->setTicker(QSharedPointer<CountTicker>::create());
    plot_->yAxis->setTicks(style_.hasCountAxis);
    plot_->yAxis->setTickLabels(style_.hasCountAxis);
    plot_->yAxis->grid()->setVisible(style_.hasCountAxis);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setMouseTracking(true);
    setAccessibleRole(*this, QAccessible::Chart);
    top_ = roundTop(0);
    applyStyle();
}

void BarChart::applyStyle() {
    setFixedHeight(Theme::scaled(style_.height));
    for (QCPAxis* axis : {plot_->xAxis, plot_->yAxis}) {
        axis->setTickLabelFont(labelFont());
        axis->setLabelFont(labelFont());
    }
    layOut();
}

QMargins BarChart::margins() const {
    const QFontMetrics metrics(labelFont());
    const int line = metrics.height() + labelGap;
    int left = edge;
    if (style_.hasCountAxis) {
        const auto ticker = plot_->yAxis->ticker().staticCast<CountTicker>();
        left = metrics.horizontalAdvance(ticker->widestLabel(top_)) + labelGap;
    }
    left += style_.countTitle.isEmpty() ? 0 : line;
    // The upper half of the topmost label lies above the plot.
    const int above = style_.hasCountAxis ? metrics.height() / 2 + edge : edge;
    return {left, above, edge, style_.columnTitle.isEmpty() ? line : 2 * line};
}

void BarChart::layOut() {
    plot_->setGeometry(rect());
    plot_->setViewport(rect()); // its own resize event comes only when it is shown
    plot_->axisRect()->setMargins(margins());
    plot_->xAxis->setRange(-0.5, style_.columns - 0.5);
    plot_->yAxis->setRange(0, top_);
    placeMarks();
    plot_->replot(QCustomPlot::rpQueuedRefresh);
}

void BarChart::setColumns(int columns) {
    if (columns != style_.columns) {
        style_.columns = columns;
        layOut();
    }
}

void BarChart::setSegments(const std::vector<Segment>& segments) {
    std::vector<double> heights(static_cast<std::size_t>(style_.columns), 0);
    std::vector<std::size_t> tops(heights.size(), segments.size());
    std::vector<StackedBars::Piece> pieces;
    pieces.reserve(segments.size());
    for (const Segment& segment : segments) {
        if (segment.column < 0 || segment.column >= style_.columns || segment.count <= 0) {
            continue;
        }
        const auto column = static_cast<std::size_t>(segment.column);
        const double from = heights[column];
        heights[column] += static_cast<double>(segment.count);
        tops[column] = pieces.size();
        pieces.push_back({segment.column, from, heights[column], segment.color, false});
    }
    for (const std::size_t top : tops) {
        if (top < pieces.size()) {
            pieces[top].isTop = true;
        }
    }
    const double highest = heights.empty() ? 0 : *std::ranges::max_element(heights);
    const double newTop = style_.hasCountAxis ? roundTop(highest) : closeTop(highest);
    // An axis from 0 to 1 would say something of presses that nobody typed.
    plot_->yAxis->setTickLabels(style_.hasCountAxis && highest > 0);
    const bool hasNewTop = std::exchange(top_, newTop) != newTop;
    const double pixels = columnRect(0).height() * devicePixelRatioF() / newTop;
    if (bars_->setPieces(std::move(pieces), pixels) || hasNewTop) {
        layOut();
    }
}

void BarChart::setMarks(std::vector<Mark> marks) {
    if (marks == marks_) {
        return;
    }
    marks_ = std::move(marks);
    placeMarks();
    plot_->replot(QCustomPlot::rpQueuedRefresh);
}

void BarChart::placeMarks() {
    const QFontMetrics metrics(labelFont());
    auto ticker = QSharedPointer<QCPAxisTickerText>::create();
    double end = 0; // of the last label
    for (const Mark& mark : marks_) {
        const double centre = columnRect(mark.column).center().x();
        const double half = metrics.horizontalAdvance(mark.label) / 2.0;
        const bool hasRoom = marks_.front() == mark || centre - half >= end + metrics.averageCharWidth();
        ticker->addTick(mark.column, hasRoom ? mark.label : QString());
        end = hasRoom ? centre + half : end;
    }
    plot_->xAxis->setTicker(ticker);
}

void BarChart::setHighlight(std::optional<Highlight> highlight) {
    if (bars_->setHighlight(highlight)) {
        plot_->replot(QCustomPlot::rpQueuedRefresh);
    }
}

QRectF BarChart::columnRect(int column) const {
    const QRectF plot = QRectF(rect()).marginsRemoved(margins());
    const double width = plot.width() / style_.columns;
    return {plot.left() + column * width, plot.top(), width, plot.height()};
}

std::optional<int> BarChart::columnAt(double x) const {
    const QRectF first = columnRect(0);
    const double column = std::floor((x - first.left()) / first.width());
    if (std::isnan(column) || column < 0 || column >= style_.columns) {
        return std::nullopt;
    }
    return static_cast<int>(column);
}

void BarChart::mouseMoveEvent(QMouseEvent* event) {
    Q_EMIT columnPointedAt(columnAt(event->position().x()));
}

void BarChart::leaveEvent(QEvent*) {
    Q_EMIT columnPointedAt(std::nullopt);
}

void BarChart::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    layOut();
}

void BarChart::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::ApplicationFontChange) {
        applyStyle();
    }
}

QString hourReading(int hour, const std::string& count) {
    return QString::asprintf("%02d:00 – %02d:00: ", hour, (hour + 1) % 24) + QString::fromStdString(count);
}

} // namespace fernhollow
