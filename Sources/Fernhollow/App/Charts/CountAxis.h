#pragma once

#include "App/Charts/QCustomPlotHeader.h"
#include "Support/NumberText.h"

namespace fernhollow {

/// The end of an axis with labels for counts up to `highest`: a round number.
double roundTop(double highest);
/// That of an axis without labels: little more than the highest count, so that it stays while that grows.
double closeTop(double highest);

/// Few ticks at round counts, in the user's digits and grouping.
class CountTicker : public QCPAxisTicker {
public:
    CountTicker();

    /// The widest label that an axis up to `top` has.
    QString widestLabel(double top);

protected:
    double getTickStep(const QCPRange& range) override;
    int getSubTickCount(double) override { return 0; }
    QString getTickLabel(double tick, const QLocale& locale, QChar format, int precision) override;

private:
    NumberText numberText_;
};

} // namespace fernhollow
