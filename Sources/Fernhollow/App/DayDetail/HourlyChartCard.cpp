#include "App/DayDetail/HourlyChartCard.h"

#include "App/Charts/AppSegments.h"
#include "App/Widgets/ElidedLabel.h"
#include "App/Widgets/Theme.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace fernhollow {
namespace {

constexpr int radius = 10;
constexpr int padding = 12;
constexpr int spacing = 8;
constexpr int hours = 24;
constexpr int hoursBetweenMarks = 2;
constexpr int chartHeight = 180;

} // namespace

HourlyChartCard::HourlyChartCard(QWidget* parent)
    : QFrame(parent), chart_(new BarChart({.columns = hours,
                                           .height = chartHeight,
                                           .hasCountAxis = true,
                                           .columnTitle = QStringLiteral("Hour"),
                                           .countTitle = QStringLiteral("Count")})),
      reading_(new ElidedLabel(Qt::ElideLeft)),
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
    auto* header = new QHBoxLayout;
    header->addWidget(Theme::makeLabel(QStringLiteral("Hourly Activity"),
                                       Theme::font(Theme::TextStyle::headline), Theme::primary));
    header->addStretch();
    header->addWidget(reading_);
    layout->addLayout(header);
    reading_->setFont(Theme::font(Theme::TextStyle::caption));
    std::vector<BarChart::Mark> marks;
    for (int hour = 0; hour < hours; hour += hoursBetweenMarks) {
        marks.push_back({hour, QString::asprintf("%02d:00", hour)});
    }
    chart_->setMarks(std::move(marks));
    connect(chart_, &BarChart::columnPointedAt, this, [this](std::optional<int> hour) { pointAt(hour); });
    layout->addWidget(chart_);
    layout->addWidget(empty_);
}

HourlyChartCard::~HourlyChartCard() {
    disconnect(chart_, nullptr, this, nullptr); // which may still hear of the pointer
}

void HourlyChartCard::show(const std::vector<AppTracker::HourlyAppStats>& hourly) {
    std::vector<AppCount> counts;
    counts.reserve(hourly.size());
    for (const auto& entry : hourly) {
        counts.push_back({entry.hour, entry.bundleId, entry.count});
    }
    const auto segments = appSegments(counts);
    totals_.fill(0);
    for (const auto& entry : hourly) {
        if (entry.hour >= 0 && entry.hour < hours) {
            totals_[static_cast<std::size_t>(entry.hour)] += entry.count;
        }
    }
    chart_->setVisible(!segments.empty());
    empty_->setVisible(segments.empty());
    chart_->setSegments(segments);
    pointAt(segments.empty() ? std::nullopt : pointedAt_);
}

void HourlyChartCard::pointAt(std::optional<int> hour) {
    pointedAt_ = hour;
    if (!hour) {
        reading_->setFullText({});
        chart_->setHighlight(std::nullopt);
        return;
    }
    const std::int64_t total = totals_[static_cast<std::size_t>(*hour)];
    reading_->setFullText(hourReading(*hour, numberText_(total)));
    chart_->setHighlight(BarChart::Highlight{*hour, total});
}

} // namespace fernhollow
