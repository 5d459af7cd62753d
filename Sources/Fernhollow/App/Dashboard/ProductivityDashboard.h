#pragma once

#include "App/Widgets/Redraw.h"
#include "Support/Observable.h"

#include <QElapsedTimer>
#include <QScrollArea>

#include <bitset>
#include <memory>
#include <vector>

namespace fernhollow {

class AppBreakdownView;
class AppModel;
class Clock;
class LastDaysCard;
class MetricsCard;
class TodayCard;
class WeekComparisonCard;

/// The account's figures: a column of cards, which scrolls.
///
/// It follows the model: whatever changes, the cards that show it are drawn again in the next frame, or some
/// seven times a second when changes come faster than anybody reads; not at all while it is hidden.
class ProductivityDashboard : public QScrollArea {
public:
    ProductivityDashboard(std::shared_ptr<AppModel> model, const Clock& clock, QWidget* parent = nullptr);
    ~ProductivityDashboard() override;

protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    enum Part { count, hours, days, applications, metrics, parts };
    using Parts = std::bitset<parts>;

    void layOut();
    void follow();
    void requestRefresh(Parts stale);
    void refresh();
    void refreshDays();

    std::shared_ptr<AppModel> model_;
    const Clock& clock_;
    std::vector<Observation> cancellables_;
    Redraw redraw_{*this, [this] { refresh(); }};
    QElapsedTimer sinceRedraw_;
    Parts stale_ = Parts().set();

    TodayCard* today_;
    WeekComparisonCard* weeks_;
    LastDaysCard* lastDays_;
    AppBreakdownView* applications_;
    MetricsCard* metrics_;
};

} // namespace fernhollow
