#include "App/Dashboard/AppBreakdownView.h"

#include "App/Lists/AppListView.h"
#include "Model/AppModel.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

#include <algorithm>

namespace fernhollow {
namespace {

constexpr int listHeight = 120;
constexpr int headerSpacing = 6;
constexpr double rowPoints = 12;
constexpr const char* smallField =
    "QLineEdit { padding: 3px 7px; } QLineEdit:focus { padding: 2px 6px; }"; // its frame grows by a pixel

} // namespace

AppBreakdownView::AppBreakdownView(std::shared_ptr<AppModel> model, const Clock& clock, QWidget* parent)
    : DashboardCard(QStringLiteral("Apps Breakdown"), parent), model_(std::move(model)), clock_(clock),
      date_(Theme::makeLabel({}, Theme::TextStyle::subheadline, Theme::secondary)),
      searchField_(new QLineEdit),
      list_(new AppListView({.points = rowPoints, .verticalPadding = 3, .background = Theme::row})) {
    searchField_->setPlaceholderText(QStringLiteral("Search apps..."));
    searchField_->setAccessibleName(QStringLiteral("Search apps"));
    searchField_->setFont(Theme::font(rowPoints));
    searchField_->setStyleSheet(QString::fromLatin1(smallField));
    connect(searchField_, &QLineEdit::textChanged, this, [this](const QString& text) {
        search_.setText(text.toStdString());
        refresh();
    });
    Theme::setGround(*list_, Theme::control);
    Theme::setGround(*list_->viewport(), Theme::control);
    list_->setMinimumHeight(Theme::scaled(listHeight));
    list_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Expanding);
    body_->setSizeConstraint(QLayout::SetMinAndMaxSize); // no higher than the list with all its rows
    body_->addWidget(makeHeader());
    body_->addWidget(searchField_);
    body_->addWidget(list_);
}

QWidget* AppBreakdownView::makeHeader() {
    date_->hide();
    auto* header = new QWidget;
    header->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    auto* layout = new QHBoxLayout(header);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(headerSpacing);
    layout->addWidget(makeTitle(QStringLiteral("Apps Breakdown")));
    layout->addWidget(date_);
    layout->addStretch();
    return header;
}

void AppBreakdownView::setSelectedDate(std::optional<Instant> date) {
    selectedDate_ = date;
}

void AppBreakdownView::refresh() {
    const bool isPast =
        selectedDate_ && calendar_.startOfDay(*selectedDate_) != calendar_.startOfDay(clock_.now());
    showDate(isPast ? selectedDate_ : std::nullopt);
    const AppTracker& tracker = model_->appTracker();
    auto items = isPast ? AppList::ofDay(tracker.last30DaysAppDaily.get(), *selectedDate_, calendar_)
                        : AppList::ofToday(tracker.todayAppTotals.get());
    const bool hasAny = !items.empty();
    mostRows_ = std::max(mostRows_, static_cast<int>(items.size()));
    AppList::arrange(items, search_);
    list_->setEmptyText(emptyListText(hasAny ? searchField_->text() : QString()));
    list_->setItems(items);
    list_->setMaximumHeight(std::max(list_->minimumHeight(), list_->heightOf(mostRows_)));
}

void AppBreakdownView::showDate(std::optional<Instant> pastDay) {
    if (pastDay) {
        date_->setText(QStringLiteral("• ") + QString::fromStdString(dayText_.dayAndMonth(*pastDay)));
    }
    date_->setVisible(pastDay.has_value());
}

} // namespace fernhollow
