#include "App/DayDetail/DaySummaryCard.h"

#include "App/Widgets/FigureLabel.h"
#include "App/Widgets/FlowLayout.h"
#include "App/Widgets/Theme.h"
#include "Presentation/AppList.h"
#include "Presentation/FixedDecimals.h"

#include <QLabel>
#include <QVBoxLayout>

namespace fernhollow {
namespace {

constexpr int radius = 10;
constexpr int padding = 12;
constexpr int spacing = 8;
constexpr double valuePoints = 20;

FigureLabel* addMetricBox(FlowLayout& row, const QString& label) {
    auto* value = new FigureLabel(Theme::font(valuePoints, QFont::DemiBold), Theme::primary);
    value->setAccessibleDescription(label);
    auto* box = new QWidget;
    auto* lines = new QVBoxLayout(box);
    lines->setContentsMargins(0, 0, 0, 0);
    lines->setSpacing(0);
    lines->addWidget(value, 0, Qt::AlignLeft);
    lines->addWidget(Theme::makeLabel(label, Theme::TextStyle::caption, Theme::secondary));
    row.addWidget(box);
    return value;
}

} // namespace

DaySummaryCard::DaySummaryCard(QWidget* parent) : QFrame(parent) {
    Theme::styleAsCard(*this, radius);
    setAccessibleName(QStringLiteral("Summary"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(padding, padding, padding, padding);
    layout->setSpacing(spacing);
    layout->addWidget(
        Theme::makeLabel(QStringLiteral("Summary"), Theme::font(Theme::TextStyle::headline), Theme::primary));
    auto* row = new FlowLayout(spacing, FlowLayout::Columns::equal);
    average_ = addMetricBox(*row, QStringLiteral("Avg/Hour"));
    peak_ = addMetricBox(*row, QStringLiteral("Peak Hour"));
    active_ = addMetricBox(*row, QStringLiteral("Active Hours"));
    layout->addLayout(row);
}

void DaySummaryCard::show(const DayFigures& figures) {
    average_->setFigure(QString::fromStdString(fixedDecimals(figures.averagePerHour(), 0)));
    peak_->setFigure(figures.peakHour ? QString::asprintf("%02d:00", *figures.peakHour)
                                      : QStringLiteral("—"));
    active_->setFigure(QString::number(figures.activeHours));
}

} // namespace fernhollow
