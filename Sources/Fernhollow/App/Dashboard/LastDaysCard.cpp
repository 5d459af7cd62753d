#include "App/Dashboard/LastDaysCard.h"

#include "App/Charts/AppSegments.h"
#include "App/Dashboard/ChartClickOverlay.h"
#include "App/Widgets/ElidedLabel.h"
#include "Presentation/DashboardSeries.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

#include <algorithm>
#include <tuple>

namespace fernhollow {
namespace {

constexpr int chartHeight = 140;
constexpr int daysBetweenMarks = 3;
constexpr float accountOpacity = 0.6F;

} // namespace

LastDaysCard::LastDaysCard()
    : DashboardCard(QStringLiteral("Last 15 Days")),
      chart_(new BarChart({.columns = DashboardSeries::days, .height = chartHeight, .hasCountAxis = true})),
      overlay_(new ChartClickOverlay(chart_)), reading_(makeReading()),
      empty_(
          Theme::makeLabel(QStringLiteral("No data available"), Theme::TextStyle::body, Theme::secondary)) {
    empty_->setAlignment(Qt::AlignCenter);
    empty_->setFixedHeight(Theme::scaled(chartHeight));
    chart_->setAccessibleName(QStringLiteral("Key presses of the last 15 days"));
    auto* header = new QHBoxLayout;
    header->addWidget(makeTitle(QStringLiteral("Last 15 Days")));
    header->addStretch();
    header->addWidget(reading_);
    body_->addLayout(header);
    body_->addWidget(chart_);
    body_->addWidget(empty_);
    connect(overlay_, &ChartClickOverlay::daySelected, this, &LastDaysCard::select);
    connect(overlay_, &ChartClickOverlay::dayClicked, this, &LastDaysCard::dayClicked);
}

LastDaysCard::~LastDaysCard() {
    disconnect(overlay_, nullptr, this, nullptr); // which may still hear of the pointer
}

void LastDaysCard::show(const std::vector<AppTracker::DailyAppStats>& daily,
                        const std::optional<ProductivityMetrics>& metrics, Instant minValidDate,
                        Instant now) {
    auto records = DashboardSeries::makeFilledDailyData(daily, metrics, minValidDate, calendar_, now);
    const bool hasDays = !records.empty();
    chart_->setVisible(hasDays || metrics);
    empty_->setVisible(!hasDays && !metrics);
    overlay_->setVisible(hasDays);
    if (hasDays) {
        showDays(std::move(records), now);
    } else if (metrics) {
        showMonth(*metrics, now);
    }
}

void LastDaysCard::showDays(std::vector<AppTracker::DailyAppStats> records, Instant now) {
    std::ranges::sort(records, {}, [](const auto& record) { return std::tie(record.day, record.bundleId); });
    columns_.emplace(DashboardSeries::days, now, calendar_);
    totals_.assign(static_cast<std::size_t>(columns_->count()), 0);
    std::vector<AppCount> counts;
    for (const auto& record : records) {
        if (const auto column = columns_->column(record.day)) {
            counts.push_back({*column, record.bundleId, record.count});
            totals_[static_cast<std::size_t>(*column)] += record.count;
        }
    }
    std::vector<BarChart::Mark> marks;
    std::vector<ChartClickOverlay::Day> days;
    for (int column = 0; column < columns_->count(); ++column) {
        const auto index = static_cast<std::size_t>(column);
        const Instant noon = columns_->noons()[index];
        if (column % daysBetweenMarks == 0) {
            marks.push_back({column, QString::fromStdString(dayText_.dayAndMonth(noon))});
        }
        days.push_back({noon, QString::fromStdString(dayText_.fullDate(noon) + ", " +
                                                     numberText_(totals_[index]) + " key presses")});
    }
    chart_->setColumns(columns_->count());
    chart_->setMarks(std::move(marks));
    chart_->setSegments(appSegments(counts));
    overlay_->setDays(ChartProxy(*chart_, *columns_), std::move(days));
    showHighlight();
}

void LastDaysCard::showMonth(const ProductivityMetrics& metrics, Instant now) {
    columns_.emplace(static_cast<int>(metrics.monthDaily.size()), now, calendar_);
    QColor color = Theme::bars;
    color.setAlphaF(accountOpacity);
    std::vector<BarChart::Segment> segments;
    std::vector<BarChart::Mark> marks;
    for (const auto& metric : metrics.monthDaily) {
        if (const auto column = columns_->column(metric.day)) {
            segments.push_back({*column, metric.count, color});
            marks.push_back({*column, QString::fromStdString(dayText_.dayAndMonth(metric.day))});
        }
    }
    chart_->setColumns(columns_->count());
    chart_->setMarks(std::move(marks));
    chart_->setSegments(segments);
    select(std::nullopt);
}

void LastDaysCard::select(std::optional<Instant> day) {
    if (day != selectedDate_) {
        selectedDate_ = day;
        showHighlight();
        Q_EMIT selectedDateChanged();
    }
}

void LastDaysCard::showHighlight() {
    const auto column = selectedDate_ && columns_ ? columns_->column(*selectedDate_) : std::nullopt;
    if (!column) {
        reading_->setFullText({});
        chart_->setHighlight(std::nullopt);
        return;
    }
    const auto index = static_cast<std::size_t>(*column);
    reading_->setFullText(QString::fromStdString(dayText_.fullDate(columns_->noons()[index]) + ": " +
                                                 numberText_(totals_[index])));
    chart_->setHighlight(BarChart::Highlight{*column, totals_[index]});
}

} // namespace fernhollow
