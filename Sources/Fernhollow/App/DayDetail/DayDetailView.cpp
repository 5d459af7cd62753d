#include "App/DayDetail/DayDetailView.h"

#include "App/DayDetail/DaySummaryCard.h"
#include "App/DayDetail/HourlyChartCard.h"
#include "App/Lists/AppListView.h"
#include "App/Widgets/FigureLabel.h"
#include "App/Widgets/Theme.h"
#include "Model/AppModel.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

#include <algorithm>

namespace fernhollow {
namespace {

constexpr QSize leastSize{600, 450};
constexpr int padding = 20;
constexpr int headerPadding = 16;
constexpr int headerSpacing = 20;
constexpr int lineSpacing = 2;
constexpr int columnSpacing = 20;
constexpr int scrollBarRoom = 14; // taken from the space between the columns
constexpr int figuresWidth = 320;
constexpr int applicationsWidth = 200;
constexpr int figuresSpacing = 16;
constexpr int applicationsSpacing = 12;
constexpr int widest = 900; // of all the content
constexpr float rowOpacity = 0.5F;

AppListDelegate::Style rowStyle() {
    QColor background = Theme::row;
    background.setAlphaF(rowOpacity);
    return {.points = 13, .countWeight = QFont::Medium, .background = background};
}

QVBoxLayout* makeLines(QWidget* upper, QWidget* lower, Qt::Alignment alignment) {
    auto* lines = new QVBoxLayout;
    lines->setSpacing(lineSpacing);
    lines->addWidget(upper, 0, alignment);
    lines->addWidget(lower, 0, alignment);
    return lines;
}

} // namespace

DayDetailView::DayDetailView(Instant selectedDate, std::shared_ptr<AppModel> model, const Clock& clock,
                             QWidget* parent)
    : QWidget(parent), selectedDate_(selectedDate), model_(std::move(model)), clock_(clock),
      columns_(new QHBoxLayout), header_(new QHBoxLayout),
      date_(Theme::makeLabel({}, Theme::font(Theme::TextStyle::title2, QFont::Bold), Theme::primary)),
      relativeDate_(Theme::makeLabel({}, Theme::TextStyle::subheadline, Theme::secondary)),
      total_(new FigureLabel(Theme::font(Theme::TextStyle::title2, QFont::Bold), Theme::primary,
                             Qt::AlignTrailing)),
      summary_(new DaySummaryCard), hours_(new HourlyChartCard), figures_(new QWidget),
      figuresArea_(new QScrollArea), searchField_(new QLineEdit), list_(new AppListView(rowStyle())) {
    setMinimumSize(leastSize);
    columns_->setSpacing(columnSpacing - scrollBarRoom);
    columns_->addWidget(makeFigures());
    columns_->addWidget(makeApplications(), 1);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(makeHeader());
    layout->addWidget(Theme::makeDivider());
    layout->addLayout(columns_, 1);
    setFocusProxy(searchField_);

    observation_ = model_->observe([this] { redraw_.request(); });
}

QWidget* DayDetailView::makeHeader() {
    const QString caption = QStringLiteral("key presses");
    total_->setAccessibleDescription(caption);
    date_->setWordWrap(true); // a long date in a large font
    for (QLabel* label : {date_, relativeDate_}) {
        label->setAlignment(Qt::AlignLeft | Qt::AlignAbsolute | Qt::AlignVCenter); // in any script
    }
    auto* header = new QWidget;
    header->setLayout(header_);
    header_->setSpacing(headerSpacing);
    header_->addLayout(makeLines(date_, relativeDate_, {}), 1);
    header_->addLayout(makeLines(
        total_, Theme::makeLabel(caption, Theme::TextStyle::subheadline, Theme::secondary), Qt::AlignRight));
    return header;
}

QWidget* DayDetailView::makeFigures() {
    auto* column = new QVBoxLayout(figures_);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(figuresSpacing);
    column->addWidget(summary_);
    column->addWidget(hours_);
    column->addStretch();

    figuresArea_->setWidget(figures_);
    figuresArea_->setWidgetResizable(true);
    figuresArea_->setFrameShape(QFrame::NoFrame);
    figuresArea_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    figuresArea_->viewport()->setAutoFillBackground(false);
    figures_->setAutoFillBackground(false);
    figuresArea_->setAccessibleName(QStringLiteral("Day figures"));
    figuresArea_->setFocusPolicy(Qt::NoFocus);
    connect(figuresArea_->verticalScrollBar(), &QScrollBar::rangeChanged, figuresArea_,
            [area = figuresArea_](int, int end) {
                area->setFocusPolicy(end > 0 ? Qt::StrongFocus : Qt::NoFocus);
            });
    return figuresArea_;
}

QWidget* DayDetailView::makeApplications() {
    searchField_->setPlaceholderText(QStringLiteral("Search apps..."));
    searchField_->setAccessibleName(QStringLiteral("Search apps"));
    connect(searchField_, &QLineEdit::textChanged, this, [this](const QString& text) {
        search_.setText(text.toStdString());
        refresh();
    });
    auto* applications = new QWidget;
    applications->setMinimumWidth(applicationsWidth);
    auto* column = new QVBoxLayout(applications);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(applicationsSpacing);
    column->addWidget(Theme::makeLabel(QStringLiteral("Apps Breakdown"),
                                       Theme::font(Theme::TextStyle::headline), Theme::secondary));
    column->addWidget(searchField_);
    column->addWidget(list_, 1);
    return applications;
}

void DayDetailView::showEvent(QShowEvent* event) {
    refresh();
    QWidget::showEvent(event);
}

// The left column grows with the user's font as far as it leaves room for the right one.
void DayDetailView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    const int side = std::max(padding, (width() - Theme::scaled(widest)) / 2);
    header_->setContentsMargins(side, headerPadding, side, headerPadding);
    columns_->setContentsMargins(side, padding, side, padding);
    const int left = width() - 2 * side - columnSpacing - Theme::scaled(applicationsWidth);
    const int fitting = std::clamp(left, figuresWidth, std::max(figuresWidth, Theme::scaled(figuresWidth)));
    figures_->setFixedWidth(fitting);
    figuresArea_->setFixedWidth(fitting + scrollBarRoom);
}

void DayDetailView::refresh() {
    static const std::vector<AppTracker::HourlyAppStats> noHours; // of a past day
    const Instant now = clock_.now();
    const bool isToday = calendar_.startOfDay(selectedDate_) == calendar_.startOfDay(now);
    date_->setText(QString::fromStdString(dayText_.fullDate(selectedDate_)));
    relativeDate_->setText(isToday ? QStringLiteral("Today")
                                   : QString::fromStdString(dayText_.fromNow(selectedDate_, now)));

    const AppTracker& tracker = model_->appTracker();
    auto apps = isToday ? AppList::ofToday(tracker.todayAppTotals.get())
                        : AppList::ofDay(tracker.last30DaysAppDaily.get(), selectedDate_, calendar_);
    const auto& hourly = isToday ? tracker.todayHourlyByApp.get() : noHours;
    const auto figures = DayFigures::of(apps, hourly);
    total_->setFigure(QString::fromStdString(numberText_(figures.dayTotal)));
    summary_->show(figures);
    hours_->show(hourly);
    AppList::setPercentages(apps, figures.dayTotal);
    const bool hasAny = !apps.empty();
    AppList::arrange(apps, search_);
    list_->setEmptyText(emptyListText(hasAny ? searchField_->text() : QString()));
    list_->setItems(apps);
}

} // namespace fernhollow
