#pragma once

#include <QFrame>

namespace fernhollow {

class FigureLabel;
struct DayFigures;

/// What a day comes to per hour.
class DaySummaryCard : public QFrame {
public:
    explicit DaySummaryCard(QWidget* parent = nullptr);

    void show(const DayFigures& figures);

private:
    FigureLabel* average_;
    FigureLabel* peak_;
    FigureLabel* active_;
};

} // namespace fernhollow
