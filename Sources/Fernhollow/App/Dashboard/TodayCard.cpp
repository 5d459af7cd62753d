#include "App/Dashboard/TodayCard.h"

#include "App/Charts/AppSegments.h"
#include "App/Widgets/ElidedLabel.h"
#include "App/Widgets/FigureLabel.h"
#include "Model/AppModel.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

#include <algorithm>
#include <array>
#include <numeric>
#include <tuple>

namespace fernhollow {
namespace {

constexpr int hours = 24;
constexpr int hoursBetweenMarks = 4;
constexpr int chartHeight = 60;
constexpr int figureSpacing = 16;
constexpr double averagePoints = 18;
constexpr std::array countPoints{32.0, 27.0, 22.0, 17.0}; // the largest one for which there is room
constexpr float accountOpacity = 0.6F;

QLabel* makeBeginning() {
    auto* label =
        Theme::makeLabel(QStringLiteral("Just type as usual: every key press is counted, and this window "
                                        "shows how many there were, when and in which application."),
                         Theme::TextStyle::callout, Theme::primary);
    label->setWordWrap(true);
    return label;
}

} // namespace

TodayCard::TodayCard(std::shared_ptr<AppModel> model)
    : DashboardCard(QStringLiteral("Today")), model_(std::move(model)),
      count_(
          new FigureLabel(Theme::font(countPoints.front(), QFont::Bold), Theme::primary, Qt::AlignTrailing)),
      average_(
          new FigureLabel(Theme::font(averagePoints, QFont::DemiBold), Theme::primary, Qt::AlignTrailing)),
      title_(makeTitle(QStringLiteral("Today"))), reading_(makeReading()), beginning_(makeBeginning()),
      chart_(new BarChart({.columns = hours, .height = chartHeight})) {
    std::vector<BarChart::Mark> marks;
    for (int hour = 0; hour < hours; hour += hoursBetweenMarks) {
        marks.push_back({hour, QString::number(hour)});
    }
    chart_->setMarks(std::move(marks));
    chart_->setAccessibleName(QStringLiteral("Key presses by hour"));
    body_->addWidget(makeHeader());
    body_->addWidget(beginning_);
    body_->addWidget(chart_);
    QObject::connect(chart_, &BarChart::columnPointedAt, this,
                     [this](std::optional<int> hour) { pointAt(hour); });
}

TodayCard::~TodayCard() {
    QObject::disconnect(chart_, nullptr, this, nullptr); // which may still hear of the pointer
}

QWidget* TodayCard::makeHeader() {
    constexpr auto style = Theme::TextStyle::caption2;
    averageFigure_ = makeFigure(average_, QStringLiteral("avg/hour"), style, Qt::AlignRight);
    auto* header = new QWidget;
    header->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    auto* layout = new QHBoxLayout(header);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(figureSpacing);
    auto* left = new QVBoxLayout;
    left->setSpacing(0);
    left->addWidget(title_, 0, Qt::AlignTop);
    left->addStretch();
    left->addWidget(reading_, 0, Qt::AlignLeft);
    layout->addLayout(left, 1);
    layout->addWidget(makeFigure(count_, QStringLiteral("key presses"), style, Qt::AlignRight), 0,
                      Qt::AlignBottom);
    layout->addWidget(averageFigure_, 0, Qt::AlignBottom);
    return header;
}

void TodayCard::refreshCount() {
    const auto length = count_->text().size() + average_->text().size();
    count_->setFigure(QString::fromStdString(model_->todayCountFormatted()));
    const auto& metrics = model_->metrics.get();
    averageFigure_->setVisible(metrics.has_value());
    if (metrics) {
        average_->setFigure(QString::number(static_cast<qint64>(metrics->avgPerHour)));
    }
    beginning_->setVisible(!hasCounts());
    if (length != count_->text().size() + average_->text().size()) {
        fitCount();
    }
}

// As the tracker's series for charts has it, but with each press, so without a copy of its texts.
std::vector<BarChart::Segment> TodayCard::hourlySegments() {
    const auto& entries = model_->appTracker().todayHourlyByApp.get();
    const auto place = [&](std::size_t i) { return std::tie(entries[i].hour, entries[i].bundleId); };
    if (order_.size() != entries.size() || !std::ranges::is_sorted(order_, {}, place)) {
        order_.resize(entries.size());
        std::iota(order_.begin(), order_.end(), std::size_t{0});
        std::ranges::sort(order_, {}, place);
    }
    std::vector<AppCount> counts;
    counts.reserve(order_.size());
    for (const std::size_t i : order_) {
        counts.push_back({entries[i].hour, entries[i].bundleId, entries[i].count});
    }
    auto segments = appSegments(counts);
    if (segments.empty() && model_->metrics.get()) {
        QColor color = Theme::bars;
        color.setAlphaF(accountOpacity);
        for (const auto& metric : model_->metrics.get()->todayHourly) {
            segments.push_back({metric.hour, metric.count, color});
        }
    }
    return segments;
}

void TodayCard::refreshHours() {
    const auto segments = hourlySegments();
    chart_->setVisible(!segments.empty());
    chart_->setSegments(segments);
    totals_.fill(0);
    for (const auto& segment : segments) {
        if (segment.column >= 0 && segment.column < hours) {
            totals_[static_cast<std::size_t>(segment.column)] += segment.count;
        }
    }
    pointAt(pointedAt_);
}

bool TodayCard::hasCounts() const {
    return model_->todayCountAggregated.get() > 0 ||
           std::ranges::any_of(model_->last30Days.get(), [](const auto& day) { return day.count > 0; });
}

void TodayCard::pointAt(std::optional<int> hour) {
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

void TodayCard::setRoom(int width) {
    room_ = width;
    fitCount();
}

void TodayCard::fitCount() {
    const QMargins margins = body_->contentsMargins();
    const int average = averageFigure_->isHidden() ? 0 : averageFigure_->sizeHint().width() + figureSpacing;
    const int available =
        room_ - margins.left() - margins.right() - title_->sizeHint().width() - figureSpacing - average;
    for (const double points : countPoints) {
        const QFont font = Theme::font(points, QFont::Bold);
        if (QFontMetrics(font).horizontalAdvance(count_->text()) <= available ||
            points == countPoints.back()) {
            count_->setFont(font);
            return;
        }
    }
}

} // namespace fernhollow
