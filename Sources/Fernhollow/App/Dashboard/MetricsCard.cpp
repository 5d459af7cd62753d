#include "App/Dashboard/MetricsCard.h"

#include "App/Widgets/FigureLabel.h"
#include "App/Widgets/FlowLayout.h"
#include "Presentation/FixedDecimals.h"

#include <QVBoxLayout>

namespace fernhollow {
namespace {

constexpr double valuePoints = 18;
constexpr double largeValuePoints = 28;
constexpr int boxSpacing = 24;

} // namespace

MetricsCard::MetricsCard()
    : DashboardCard(QStringLiteral("Metrics")), average_(metricBox(QStringLiteral("Avg/Day"), false)),
      peak_(metricBox(QStringLiteral("Peak Hour"), false)),
      active_(metricBox(QStringLiteral("Active Hours"), false)) {
    auto* row = new FlowLayout(boxSpacing);
    for (const Box* box : {&average_, &peak_, &active_}) {
        row->addWidget(box->widget);
    }
    body_->addWidget(makeTitle(QStringLiteral("Metrics")));
    body_->addLayout(row);
}

MetricsCard::Box MetricsCard::metricBox(const QString& label, bool isLarge) {
    auto* value = new FigureLabel(Theme::font(isLarge ? largeValuePoints : valuePoints, QFont::DemiBold),
                                  Theme::primary);
    return {makeFigure(value, label, Theme::TextStyle::caption, Qt::AlignLeft), value};
}

void MetricsCard::show(const ProductivityMetrics& metrics) {
    average_.value->setFigure(QString::fromStdString(fixedDecimals(metrics.avgPerDay, 0)));
    peak_.value->setFigure(metrics.peakHour ? QString::number(*metrics.peakHour) : QStringLiteral("—"));
    active_.value->setFigure(QString::number(metrics.activeHours));
}

} // namespace fernhollow
