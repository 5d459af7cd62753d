#pragma once

#include "App/Dashboard/DashboardCard.h"
#include "Presentation/DashboardSeries.h"
#include "Support/NumberText.h"

namespace fernhollow {

class FigureLabel;

/// The last seven days against the seven before.
class WeekComparisonCard : public DashboardCard {
public:
    WeekComparisonCard();

    void show(const DashboardSeries::WeekTotals& totals);

private:
    FigureLabel* thisWeek_;
    FigureLabel* change_;
    NumberText numberText_;
};

} // namespace fernhollow
