#include "App/DayDetail/HourlyChartCard.h"

#include "App/Charts/BarChart.h"
#include "App/Widgets/AppColor.h"
#include "App/Widgets/Theme.h"

#include <QLabel>
#include <QVBoxLayout>

#include <cmath>

namespace fernhollow {
namespace {

constexpr int radius = 10;
constexpr int padding = 12;
constexpr int spacing = 8;
constexpr int hours = 24;
constexpr int hoursBetweenMarks = 2;
constexpr int chartHeight = 180;
constexpr int labelSpacing = 6;

} // namespace

HourlyChartCard::HourlyChartCard(QWidget* parent)
    : QFrame(parent), chart_(new BarChart({.columns = hours,
                                           .height = chartHeight,
                                           .hasCountAxis = true,
                                           .columnTitle = QStringLiteral("Hour"),
                                           .countTitle = QStringLiteral("Count")})),
      empty_(
          Theme::makeLabel(QStringLiteral("No data available"), Theme::TextStyle::body, Theme::secondary)) {
    Theme::styleAsCard(*this, radius);
    setAccessibleName(QStringLiteral("Hourly Activity"));
    chart_->setAccessibleName(QStringLiteral("Key presses by hour"));
    empty_->setAlignment(Qt::AlignCenter);
    empty_->setFixedHeight(Theme::scaled(chartHeight));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(padding, padding, padding, padding);
    layout->setSpacing(spacing);
    layout->addWidget(Theme::makeLabel(QStringLiteral("Hourly Activity"),
                                       Theme::font(Theme::TextStyle::headline), Theme::primary));
    layout->addWidget(chart_);
    layout->addWidget(empty_);
}

void HourlyChartCard::show(const std::vector<AppTracker::HourlyAppStats>& hourly) {
    std::vector<BarChart::Segment> segments;
    segments.reserve(hourly.size());
    for (const auto& entry : hourly) {
        segments.push_back({entry.hour, entry.count, colorOf(entry.bundleId)});
    }
    chart_->setVisible(!segments.empty());
    empty_->setVisible(segments.empty());
    chart_->setSegments(segments);
    setMarks();
}

void HourlyChartCard::resizeEvent(QResizeEvent* event) {
    QFrame::resizeEvent(event);
    setMarks();
}

// A mark every two hours; as many of them are labelled as there is room for.
void HourlyChartCard::setMarks() {
    const double column = chart_->columnRect(0).width();
    const int label =
        QFontMetrics(Theme::font(Theme::TextStyle::caption2)).horizontalAdvance(QStringLiteral("00:00")) +
        labelSpacing;
    int between = hoursBetweenMarks;
    while (between < hours && between * column < label) {
        between *= 2;
    }
    if (std::exchange(hoursBetweenLabels_, between) == between) {
        return;
    }
    std::vector<BarChart::Mark> marks;
    for (int hour = 0; hour < hours; hour += hoursBetweenMarks) {
        marks.push_back({hour, hour % between == 0 ? QString::asprintf("%02d:00", hour) : QString()});
    }
    chart_->setMarks(std::move(marks));
}

} // namespace fernhollow
