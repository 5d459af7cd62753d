#include "App/Dashboard/DashboardCard.h"

#include "App/Widgets/ElidedLabel.h"

#include <QLabel>
#include <QVBoxLayout>

namespace fernhollow {
namespace {

constexpr int padding = 12;
constexpr int spacing = 8;
constexpr int radius = 8;

} // namespace

DashboardCard::DashboardCard(const QString& name, QWidget* parent)
    : QFrame(parent), body_(new QVBoxLayout(this)) {
    Theme::styleAsCard(*this, radius);
    setAccessibleName(name);
    body_->setContentsMargins(padding, padding, padding, padding);
    body_->setSpacing(spacing);
}

QLabel* DashboardCard::makeTitle(const QString& text) {
    return Theme::makeLabel(text, Theme::font(Theme::TextStyle::subheadline, QFont::DemiBold),
                            Theme::secondary);
}

ElidedLabel* DashboardCard::makeReading() {
    auto* reading = new ElidedLabel(Qt::ElideLeft); // the figure is at its end
    reading->setFont(Theme::font(Theme::TextStyle::caption2));
    Theme::setTextColor(*reading, Theme::primary);
    return reading;
}

QWidget* DashboardCard::makeFigure(QLabel* value, const QString& caption, Theme::TextStyle captionStyle,
                                   Qt::Alignment alignment) {
    auto* figure = new QWidget;
    auto* layout = new QVBoxLayout(figure);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(value, 0, alignment);
    layout->addWidget(Theme::makeLabel(caption, captionStyle, Theme::secondary), 0, alignment);
    value->setAccessibleDescription(caption);
    Theme::setGround(*value, Theme::control);
    return figure;
}

} // namespace fernhollow
