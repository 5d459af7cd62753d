#pragma once

#include "App/Dashboard/DashboardCard.h"
#include "KeypressCore/Calendar.h"
#include "Presentation/DayText.h"
#include "Presentation/TextSearch.h"

#include <memory>
#include <optional>

class QLineEdit;

namespace fernhollow {

class AppListView;
class AppModel;

/// The dashboard's list of applications, of today or of the past day that is selected there, which can be
/// searched by name. Its owner says when it follows the model.
class AppBreakdownView : public DashboardCard {
public:
    AppBreakdownView(std::shared_ptr<AppModel> model, const Clock& clock, QWidget* parent = nullptr);

    /// Nothing stands for today, like any instant of it.
    void setSelectedDate(std::optional<Instant> date);

    /// Brings the list up to what the model is now.
    void refresh();

private:
    QWidget* makeHeader();
    void showDate(std::optional<Instant> pastDay);

    std::shared_ptr<AppModel> model_;
    const Clock& clock_;
    Calendar calendar_ = Calendar::autoupdatingCurrent();
    DayText dayText_;
    TextSearch search_;
    std::optional<Instant> selectedDate_;

    int mostRows_ = 0; // that were listed; a search, or a day with fewer, does not move what lies below
    QLabel* date_;
    QLineEdit* searchField_;
    AppListView* list_;
};

} // namespace fernhollow
