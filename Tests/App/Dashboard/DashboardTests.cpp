// The dashboard with a real model: what it shows, when it draws, and which day answers where.

#include "App/Charts/AppSegments.h"
#include "App/Charts/BarChart.h"
#include "App/Dashboard/ChartClickOverlay.h"
#include "App/Dashboard/ProductivityDashboard.h"
#include "App/DayDetail/DayDetailWindowController.h"
#include "App/Widgets.h"
#include "App/Widgets/FlowLayout.h"
#include "App/Widgets/Theme.h"
#include "Model/ModelFixture.h"

#include <QAbstractButton>
#include <QApplication>
#include <QTest>

#include <cstdint>

namespace fernhollow::tests {
namespace {

class Dashboard : public ModelFixture {
protected:
    Dashboard() {
        DailyCountsStore store(DailyCountsStore::urlForAccount("ana@example.com"));
        for (std::int64_t day = 1; day <= 5; ++day) { // day d of March has d hundred presses
            await(store.incrementAppHourly(DayKey("2026-03-0" + std::to_string(day)), 9, "org.a", day * 100,
                                           0));
        }
        start();
        signIn("ana@example.com");
        refresh();
        publishHistory();
        view_ = std::make_unique<ProductivityDashboard>(model_, clock_);
        view_->resize(400, 900);
        view_->show();
        settle();
    }

    ~Dashboard() override {
        DayDetailWindowController::shared().close();
        view_.reset();
    }

    void publishHistory() {
        tasks_.beginWaiting();
        await(model_->appTracker().updateLast30DaysAppDaily(std::make_shared<AppDailyCache>()));
    }

    void settle() { QTest::qWait(150); } // longer than the pause between redraws

    bool comesToShow(const char* text) {
        return waitUntil([&] { return shows(*view_, text); });
    }

    ChartClickOverlay* overlay() { return view_->findChild<ChartClickOverlay*>(); }
    BarChart* chart() { return static_cast<BarChart*>(overlay()->parentWidget()); }

    QPoint middle(int column) { return chart()->columnRect(column).center().toPoint(); }

    static QString openedDay() {
        const QWidget* window = windowTitled(QStringLiteral("Day Details"));
        return window && window->isVisible() ? window->windowTitle() : QString();
    }

    /// "Feb 19, 2026" for column 0 and so on up to "Mar 5, 2026".
    static QString title(int column) {
        const int day = 19 + column;
        const QString date = day <= 28 ? QStringLiteral("Feb %1, 2026").arg(day)
                                       : QStringLiteral("Mar %1, 2026").arg(day - 28);
        return QStringLiteral("Day Details - ") + date;
    }

    std::unique_ptr<ProductivityDashboard> view_;
};

TEST_F(Dashboard, ShowsTodayTheWeekTheDaysAndTheFigures) {
    EXPECT_TRUE(shows(*view_, "1,500")) << "this week";
    EXPECT_TRUE(shows(*view_, "+0%")) << "nothing to compare with";
    EXPECT_TRUE(comesToShow("Metrics"));
    EXPECT_TRUE(shows(*view_, "—")) << "no busiest hour yet: the hours are counted apart";
    press(12);
    EXPECT_TRUE(comesToShow("12"));
    publishHistory();
    EXPECT_TRUE(comesToShow("1,512"));
    refresh();
    EXPECT_TRUE(comesToShow("9")) << "the busiest hour";
}

TEST_F(Dashboard, OpensTheDayWhoseBarIsUnderThePointerInAnyWidth) {
    for (const int width : {380, 401, 1333}) {
        view_->resize(width, 900);
        settle();
        for (int column = 0; column < 15; ++column) {
            const QRectF bar = chart()->columnRect(column);
            for (const double x : {bar.left() + 1, bar.center().x(), bar.right() - 1}) {
                QTest::mouseMove(overlay(), QPoint(qRound(x), 50));
                QTest::mouseClick(overlay(), Qt::LeftButton, {}, QPoint(qRound(x), 50));
                ASSERT_EQ(openedDay(), title(column)) << "width " << width << " x " << x;
            }
        }
    }
    DayDetailWindowController::shared().close();
    QTest::mouseClick(overlay(), Qt::LeftButton, {}, QPoint(1, 50)); // beside the plot
    EXPECT_EQ(openedDay(), QString());
}

TEST_F(Dashboard, ListsTheApplicationsOfTheDayThatIsPointedAt) {
    QTest::mouseMove(overlay(), middle(12)); // 3 March
    EXPECT_TRUE(comesToShow("• 03/03"));
    EXPECT_TRUE(shows(*view_, "Tuesday, March 3, 2026: 300"));
    QTest::mouseMove(overlay(), middle(13));
    EXPECT_TRUE(comesToShow("• 04/03"));
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(overlay(), &leave);
    settle();
    EXPECT_FALSE(shows(*view_, "• 04/03"));
}

TEST_F(Dashboard, IsWalkedWithTheArrowKeys) {
    view_->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(view_.get()));
    const auto buttons = overlay()->findChildren<QAbstractButton*>();
    ASSERT_EQ(buttons.size(), 15);
    view_->setFocus(); // as it is in its window
    QTest::keyClick(view_.get(), Qt::Key_Tab);
    ASSERT_EQ(QApplication::focusWidget(), buttons.back());
    EXPECT_EQ(buttons.back()->accessibleName(), QStringLiteral("Thursday, March 5, 2026, 500 key presses"));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Left);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Left);
    EXPECT_EQ(QApplication::focusWidget(), buttons[12]);
    QTest::mouseMove(overlay(), middle(3));
    EXPECT_TRUE(comesToShow("• 22/02"));
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(overlay(), &leave);
    EXPECT_TRUE(comesToShow("• 03/03")) << "the keyboard is there still";
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_EQ(openedDay(), title(12));
    QTest::keyClick(buttons[12], Qt::Key_Home);
    QTest::keyClick(buttons[0], Qt::Key_Left);
    EXPECT_TRUE(buttons[0]->hasFocus());
}

/// Counts the paint events of a widget and all in it.
class Paints : public QObject {
public:
    explicit Paints(QWidget* widget) {
        for (QWidget* child : widget->findChildren<QWidget*>()) {
            child->installEventFilter(this);
        }
    }
    int count = 0;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        count += event->type() == QEvent::Paint ? 1 : 0;
        return QObject::eventFilter(watched, event);
    }
};

TEST_F(Dashboard, DrawsOnceWhatChangedAndNothingWhileHidden) {
    press(1000);
    settle();
    Paints ofDays(chart());
    Paints all(view_.get());
    press(40); // within one turn of the event loop
    settle();
    EXPECT_EQ(ofDays.count, 0) << "a press moves no bar of the days until the next refresh";
    EXPECT_GT(all.count, 0);
    EXPECT_LT(all.count, 12);

    view_->hide();
    all.count = 0;
    press(10);
    settle();
    EXPECT_EQ(all.count, 0);
    view_->show();
    EXPECT_TRUE(shows(*view_, "1,050")) << "right at once, without waiting for a frame";
}

TEST(AppSegments, FoldWhatCannotBeToldApartAnyMore) {
    const auto ids = std::to_array<std::string>({"a", "b", "c", "d", "e", "f", "g", "h", "i", "j"});
    std::vector<AppCount> counts;
    for (const std::string& id : ids) { // a has 100 presses in column 0, b 99, and so on
        counts.push_back({0, id, 100 - static_cast<std::int64_t>(counts.size())});
    }
    counts.pop_back();
    EXPECT_EQ(appSegments(counts).size(), 9U) << "a ninth one has a colour as well as the others would";
    counts.push_back({0, "j", 91});
    const auto segments = appSegments(counts);
    ASSERT_EQ(segments.size(), 9U);
    EXPECT_EQ(segments.back().color, Theme::others);
    EXPECT_EQ(segments.back().count, 92 + 91);
}

TEST(FlowLayout, GoesOnBelowWhereThereIsNoRoomBeside) {
    QWidget box;
    auto* layout = new FlowLayout(10);
    box.setLayout(layout);
    for (int i = 0; i < 3; ++i) {
        auto* figure = new QWidget;
        figure->setFixedSize(100, 20);
        layout->addWidget(figure);
    }
    EXPECT_EQ(layout->heightForWidth(320), 20);
    EXPECT_EQ(layout->heightForWidth(319), 50);
    EXPECT_EQ(layout->heightForWidth(120), 80);
}

} // namespace
} // namespace fernhollow::tests
