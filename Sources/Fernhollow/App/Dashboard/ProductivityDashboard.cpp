#include "App/Dashboard/ProductivityDashboard.h"

#include "App/Dashboard/AppBreakdownView.h"
#include "App/Dashboard/LastDaysCard.h"
#include "App/Dashboard/MetricsCard.h"
#include "App/Dashboard/TodayCard.h"
#include "App/Dashboard/WeekComparisonCard.h"
#include "App/DayDetail/DayDetailWindowController.h"
#include "Model/AppModel.h"

#include <QVBoxLayout>

#include <algorithm>
#include <chrono>

namespace fernhollow {
namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds pause = 150ms; // between redraws, while the person types fast
constexpr int padding = 12;
constexpr int spacing = 12;
constexpr int widest = 900; // wider bars and rows are no easier to read

} // namespace

ProductivityDashboard::ProductivityDashboard(std::shared_ptr<AppModel> model, const Clock& clock,
                                             QWidget* parent)
    : QScrollArea(parent), model_(std::move(model)), clock_(clock), today_(new TodayCard(model_)),
      weeks_(new WeekComparisonCard), lastDays_(new LastDaysCard),
      applications_(new AppBreakdownView(model_, clock_)), metrics_(new MetricsCard) {
    setAccessibleName(QStringLiteral("Dashboard"));
    layOut();
    connect(lastDays_, &LastDaysCard::selectedDateChanged, this, [this] {
        applications_->setSelectedDate(lastDays_->selectedDate());
        stale_.set(applications);
        redraw_.request(); // the pointer does not wait
    });
    connect(lastDays_, &LastDaysCard::dayClicked, this,
            [this](Instant day) { DayDetailWindowController::shared().showWindow(day, model_, clock_); });
    follow();
}

// While the cards are destroyed after this, the pointer leaves them and the selection ends.
ProductivityDashboard::~ProductivityDashboard() {
    disconnect(lastDays_, nullptr, this, nullptr);
}

void ProductivityDashboard::layOut() {
    setFrameShape(QFrame::NoFrame);
    setAlignment(Qt::AlignHCenter);
    setWidgetResizable(true);
    auto* content = new QWidget;
    auto* layout = new QVBoxLayout(content);
    layout->setContentsMargins(padding, padding, padding, padding);
    layout->setSpacing(spacing);
    for (QWidget* card :
         std::initializer_list<QWidget*>{today_, weeks_, lastDays_, applications_, metrics_}) {
        layout->addWidget(card, card == applications_ ? 1 : 0); // whose list uses what height there is
    }
    layout->addStretch();
    content->setMaximumWidth(Theme::scaled(widest));
    setWidget(content);
}

void ProductivityDashboard::follow() {
    const auto observe = [this](auto& field, std::initializer_list<Part> shownBy) {
        Parts stale;
        for (const Part part : shownBy) {
            stale.set(part);
        }
        cancellables_.push_back(field.observe([this, stale] { requestRefresh(stale); }));
    };
    AppTracker& tracker = model_->appTracker();
    observe(model_->todayCountAggregated, {count});
    observe(model_->metrics, {count, hours, days, metrics});
    observe(model_->last30Days, {days}); // a new day begins with it
    observe(tracker.todayHourlyByApp, {hours});
    observe(tracker.last30DaysAppDaily, {days, applications});
    observe(tracker.todayAppTotals, {applications});
}

void ProductivityDashboard::showEvent(QShowEvent* event) {
    stale_.set();
    refresh();
    QScrollArea::showEvent(event);
    model_->refreshFromDisk();
}

void ProductivityDashboard::resizeEvent(QResizeEvent* event) {
    QScrollArea::resizeEvent(event);
    today_->setRoom(std::min(viewport()->width(), Theme::scaled(widest)) - 2 * padding);
}

void ProductivityDashboard::requestRefresh(Parts stale) {
    stale_ |= stale;
    const std::chrono::milliseconds passed(sinceRedraw_.isValid() ? sinceRedraw_.elapsed() : pause.count());
    redraw_.request(std::max(Redraw::frame, pause - passed));
}

void ProductivityDashboard::refresh() {
    const Parts stale = std::exchange(stale_, {});
    sinceRedraw_.start();
    if (stale[count]) {
        today_->refreshCount();
    }
    if (stale[hours]) {
        today_->refreshHours();
    }
    if (stale[days]) {
        refreshDays();
    }
    if (stale[applications]) {
        applications_->refresh();
    }
    if (stale[metrics]) {
        const auto& figures = model_->metrics.get();
        metrics_->setVisible(figures.has_value());
        if (figures) {
            metrics_->show(*figures);
        }
    }
}

void ProductivityDashboard::refreshDays() {
    const Instant now = clock_.now();
    const auto daily = model_->appTracker().getFilteredDailyData();
    weeks_->show(DashboardSeries::calculateWeekTotals(daily, Calendar::autoupdatingCurrent(), now));
    lastDays_->show(daily, model_->metrics.get(), AppTracker::minValidDate(clock_), now);
}

} // namespace fernhollow
