#pragma once

#include "App/Widgets/Redraw.h"
#include "KeypressCore/Calendar.h"
#include "Presentation/DayText.h"
#include "Presentation/TextSearch.h"
#include "Support/NumberText.h"
#include "Support/Observable.h"

#include <QWidget>

#include <memory>

class QHBoxLayout;
class QLabel;
class QLineEdit;
class QScrollArea;

namespace fernhollow {

class AppListView;
class AppModel;
class DaySummaryCard;
class FigureLabel;
class HourlyChartCard;

/// One day: its total, what it comes to per hour, and the applications, which can be searched by name.
///
/// It keeps its day. While that is today it follows the presses, afterwards the history. Any number of
/// changes of the model ask for one redraw, at most one a frame, and none while the view is hidden.
class DayDetailView : public QWidget {
public:
    /// The day of `selectedDate`.
    DayDetailView(Instant selectedDate, std::shared_ptr<AppModel> model, const Clock& clock,
                  QWidget* parent = nullptr);

protected:
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    QWidget* makeHeader();
    QWidget* makeFigures();
    QWidget* makeApplications();
    void refresh();

    Instant selectedDate_;
    std::shared_ptr<AppModel> model_;
    const Clock& clock_;
    Calendar calendar_ = Calendar::autoupdatingCurrent();
    DayText dayText_;
    NumberText numberText_;
    TextSearch search_;
    Observation observation_;
    Redraw redraw_{*this, [this] { refresh(); }};

    QHBoxLayout* columns_;
    QHBoxLayout* header_;
    QLabel* date_;
    QLabel* relativeDate_;
    FigureLabel* total_;
    DaySummaryCard* summary_;
    HourlyChartCard* hours_;
    QWidget* figures_; // the left column
    QScrollArea* figuresArea_;
    QLineEdit* searchField_;
    AppListView* list_;
};

} // namespace fernhollow
