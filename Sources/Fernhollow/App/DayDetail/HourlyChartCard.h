#pragma once

#include "Model/AppTracker.h"
#include "Support/NumberText.h"

#include <QFrame>

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

class QLabel;

namespace fernhollow {

class BarChart;
class ElidedLabel;

/// The hours of a day, each a bar of what was typed in the applications.
class HourlyChartCard : public QFrame {
public:
    explicit HourlyChartCard(QWidget* parent = nullptr);
    ~HourlyChartCard() override;

    void show(const std::vector<AppTracker::HourlyAppStats>& hourly);

private:
    void pointAt(std::optional<int> hour);

    NumberText numberText_;
    std::optional<int> pointedAt_;          // the hour under the pointer
    std::array<std::int64_t, 24> totals_{}; // of the hours
    BarChart* chart_;
    ElidedLabel* reading_;
    QLabel* empty_;
};

} // namespace fernhollow
