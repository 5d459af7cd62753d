#include "App/Dashboard/WeekComparisonCard.h"

#include "App/Widgets/FigureLabel.h"
#include "Presentation/FixedDecimals.h"

#include <QHBoxLayout>

#include <cmath>

namespace fernhollow {
namespace {

constexpr double figurePoints = 24;

} // namespace

WeekComparisonCard::WeekComparisonCard()
    : DashboardCard(QStringLiteral("Week Comparison")),
      thisWeek_(new FigureLabel(Theme::font(figurePoints, QFont::DemiBold), Theme::primary)),
      change_(
          new FigureLabel(Theme::font(figurePoints, QFont::DemiBold), Theme::success, Qt::AlignTrailing)) {
    constexpr auto style = Theme::TextStyle::caption2;
    auto* row = new QHBoxLayout;
    row->addWidget(makeFigure(thisWeek_, QStringLiteral("This week"), style, Qt::AlignLeft));
    row->addStretch();
    row->addWidget(makeFigure(change_, QStringLiteral("vs last week"), style, Qt::AlignRight));
    body_->addWidget(makeTitle(QStringLiteral("Week Comparison")));
    body_->addLayout(row);
}

void WeekComparisonCard::show(const DashboardSeries::WeekTotals& totals) {
    thisWeek_->setFigure(QString::fromStdString(numberText_(totals.thisWeek)));
    const double change = totals.change();
    const std::string sign = std::signbit(change) ? "" : "+"; // a minus is part of the number
    change_->setFigure(QString::fromStdString(sign + fixedDecimals(change, 0) + "%"));
    const bool isLess = totals.thisWeek < totals.lastWeek;
    Theme::setTextColor(*change_, isLess ? Theme::failure : Theme::success);
}

} // namespace fernhollow
