#include "App/AppListFixture.h"
#include "App/Charts/BarChart.h"
#include "App/DayDetail/DayDetailView.h"
#include "App/DayDetail/DayDetailWindowController.h"
#include "App/Widgets.h"

#include <QLineEdit>

#include <array>

namespace fernhollow::tests {
namespace {

class DayDetail : public AppListFixture {
protected:
    ~DayDetail() override { DayDetailWindowController::shared().close(); }

    void open(Instant date) { DayDetailWindowController::shared().showWindow(date, model_, clock_); }

    static QWidget* window() { return windowTitled(QStringLiteral("Day Details")); }

    static QLineEdit* field() { return window()->findChild<QLineEdit*>(); }

    static bool shows(const char* text) { return tests::shows(*window(), text); }

    /// The total, Avg/Hour, Peak Hour and Active Hours.
    static std::vector<std::string> figures() {
        std::vector<std::string> figures;
        for (const auto* name : {"key presses", "Avg/Hour", "Peak Hour", "Active Hours"}) {
            for (const auto* label : window()->findChildren<QLabel*>()) {
                if (label->accessibleDescription() == QLatin1StringView(name)) {
                    figures.push_back(label->text().toStdString());
                }
            }
        }
        return figures;
    }
};

TEST_F(DayDetail, ShowsTodayByHourAndApplication) {
    press(1000, "org.a");
    clock_.advance(5h);
    press(500, "org.b");
    press(501, "org.a");
    open(march(5));
    EXPECT_TRUE(shows("Thursday, March 5, 2026"));
    EXPECT_TRUE(shows("Today"));
    EXPECT_THAT(figures(), ElementsAre("2,001", "1000", "14:00", "2")); // a half goes to the even number
    EXPECT_FALSE(shows("No data available"));
    EXPECT_THAT(rows(*window()), ElementsAre("Name of org.a, 1,501 key presses, 75.0%",
                                             "Name of org.b, 500 key presses, 25.0%"));

    ASSERT_TRUE(QTest::qWaitForWindowActive(window()));
    auto* chart = window()->findChild<BarChart*>();
    QTest::mouseMove(chart, chart->columnRect(14).center().toPoint());
    EXPECT_TRUE(QTest::qWaitFor([] { return shows("14:00 – 15:00: 1,001"); }));
    QTest::keyClicks(field(), QStringLiteral("ORG.b")); // shares stay those of the day
    EXPECT_THAT(rows(*window()), ElementsAre("Name of org.b, 500 key presses, 25.0%"));
}

TEST_F(DayDetail, KnowsNoHoursOfPastDays) {
    open(march(2, 23));
    EXPECT_TRUE(shows("Monday, March 2, 2026"));
    EXPECT_TRUE(shows("3 days ago"));
    EXPECT_THAT(figures(), ElementsAre("2,000", "0", "—", "0"));
    EXPECT_TRUE(shows("No data available"));
    EXPECT_THAT(rows(*window()),
                ElementsAre("Mail, 1,500 key presses, 75.0%", "org.b, 500 key presses, 25.0%"));

    open(march(3));
    EXPECT_TRUE(shows("2 days ago"));
    EXPECT_THAT(figures(), ElementsAre("0", "0", "—", "0"));
    EXPECT_TRUE(shows("No data available"));
    EXPECT_THAT(rows(*window()), IsEmpty());
}

TEST_F(DayDetail, FollowsThePressesWhileItIsVisible) {
    open(march(5));
    EXPECT_THAT(figures(), ElementsAre("0", "0", "—", "0"));
    press(3);
    EXPECT_TRUE(waitUntil([] { return figures().front() == "3"; }));
    EXPECT_THAT(rows(*window()), ElementsAre("Name of org.a, 3 key presses, 100.0%"));

    window()->close();
    press(1);
    EXPECT_FALSE(QTest::qWaitFor([] { return figures().front() != "3"; }, 50));
    window()->show();
    EXPECT_THAT(figures(), ElementsAre("4", "4", "09:00", "1")); // right at once
}

TEST_F(DayDetail, KeepsItsDayAfterMidnight) {
    press(7);
    flush();
    open(march(5));
    clock_.set(march(6, 0));
    refreshHistory();
    EXPECT_TRUE(waitUntil([] { return shows("1 day ago"); }));
    EXPECT_TRUE(waitUntil([] { return figures().front() == "7"; }));
    EXPECT_TRUE(shows("No data available"));
}

TEST_F(DayDetail, IsOneWindowWhoseContentIsReplaced) {
    open(march(5));
    QWidget* first = window();
    EXPECT_EQ(first->size(), QSize(700, 550));
    EXPECT_EQ(first->minimumSize(), QSize(600, 450));
    EXPECT_EQ(first->windowTitle(), QStringLiteral("Day Details - Mar 5, 2026"));
    ASSERT_TRUE(QTest::qWaitForWindowActive(first));
    EXPECT_TRUE(field()->hasFocus());
    QTest::keyClicks(field(), QStringLiteral("x"));

    open(march(2));
    EXPECT_EQ(window(), first);
    EXPECT_EQ(first->windowTitle(), QStringLiteral("Day Details - Mar 2, 2026"));
    EXPECT_EQ(first->findChildren<QLineEdit*>().size(), 1);
    EXPECT_EQ(field()->text(), QString());
    EXPECT_EQ(rows(*first).size(), 2U);

    ASSERT_TRUE(QTest::qWaitForWindowActive(first));
    QTest::keyClick(field(), Qt::Key_Escape);
    EXPECT_FALSE(first->isVisible());
    open(march(2));
    EXPECT_EQ(window(), first);
    EXPECT_TRUE(first->isVisible());
    ASSERT_TRUE(QTest::qWaitForWindowActive(first));
    QTest::keyClick(field(), Qt::Key_W, Qt::ControlModifier);
    EXPECT_FALSE(first->isVisible());
    DayDetailWindowController::shared().close();
    EXPECT_EQ(window(), nullptr);
}

} // namespace
} // namespace fernhollow::tests
