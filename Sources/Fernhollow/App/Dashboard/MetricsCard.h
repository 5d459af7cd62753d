#pragma once

#include "App/Dashboard/DashboardCard.h"
#include "Model/ProductivityMetrics.h"

namespace fernhollow {

class FigureLabel;

/// The average day, the busiest hour and the hours of today with at least one press.
class MetricsCard : public DashboardCard {
public:
    MetricsCard();

    void show(const ProductivityMetrics& metrics);

private:
    struct Box {
        QWidget* widget;
        FigureLabel* value;
    };
    static Box metricBox(const QString& label, bool isLarge);

    Box average_;
    Box peak_;
    Box active_;
};

} // namespace fernhollow
