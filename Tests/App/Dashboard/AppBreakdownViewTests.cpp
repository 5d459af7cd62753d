#include "App/AppListFixture.h"
#include "App/Dashboard/AppBreakdownView.h"

#include <QHelpEvent>
#include <QLabel>
#include <QLineEdit>
#include <QScrollBar>
#include <QToolTip>

#include <cstdint>

namespace fernhollow::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class AppBreakdown : public AppListFixture {
protected:
    AppBreakdown() {
        view_.resize(380, 220);
        view_.refresh();
        view_.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&view_));
    }

    void select(std::optional<Instant> date) {
        view_.setSelectedDate(date);
        view_.refresh();
    }

    void press(std::int64_t times, const std::string& app) {
        AppListFixture::press(times, app);
        view_.refresh();
        QCoreApplication::processEvents();
    }

    std::string header() const {
        std::string text;
        for (const auto* label : view_.findChildren<QLabel*>()) {
            text += label->isVisible() ? label->text().toStdString() + " " : "";
        }
        return text;
    }

    AppBreakdownView view_{model_, clock_};
    AppListView* list_ = view_.findChild<AppListView*>();
    QLineEdit* field_ = view_.findChild<QLineEdit*>();
};

TEST_F(AppBreakdown, FollowsToday) {
    EXPECT_THAT(rows(view_), IsEmpty());
    press(2, "org.a");
    press(1234, "org.b");
    EXPECT_EQ(header(), "Apps Breakdown ");
    EXPECT_THAT(rows(view_), ElementsAre("Name of org.b, 1,234 key presses", "Name of org.a, 2 key presses"));
    press(1233, "org.a");
    EXPECT_THAT(rows(view_),
                ElementsAre("Name of org.a, 1,235 key presses", "Name of org.b, 1,234 key presses"));
}

TEST_F(AppBreakdown, ShowsTheSelectedDay) {
    press(1, "org.a");
    struct Selection {
        std::optional<Instant> date;
        const char* header;
        std::vector<std::string> rows;
    };
    const std::vector<Selection> selections{
        {march(2), "Apps Breakdown • 02/03 ", {"Mail, 1,500 key presses", "org.b, 500 key presses"}},
        {march(2, 0), "Apps Breakdown • 02/03 ", {"Mail, 1,500 key presses", "org.b, 500 key presses"}},
        {march(3), "Apps Breakdown • 03/03 ", {}},
        {march(2) - std::chrono::days(365), "Apps Breakdown • 02/03 ", {}},
        {march(5, 23), "Apps Breakdown ", {"Name of org.a, 1 key presses"}},
        {std::nullopt, "Apps Breakdown ", {"Name of org.a, 1 key presses"}},
    };
    for (const auto& [date, header, expected] : selections) {
        select(date);
        EXPECT_EQ(this->header(), header);
        EXPECT_EQ(rows(view_), expected);
    }
}

TEST_F(AppBreakdown, IsSearchedByTyping) {
    press(2, "org.a");
    press(1, "org.b");
    QTest::keyClicks(field_, QStringLiteral("ORG.B"));
    EXPECT_THAT(rows(view_), ElementsAre("Name of org.b, 1 key presses"));
    press(5, "org.b"); // what is searched follows, too
    EXPECT_THAT(rows(view_), ElementsAre("Name of org.b, 6 key presses"));
    QTest::keyClicks(field_, QStringLiteral("x"));
    EXPECT_THAT(rows(view_), IsEmpty());
    field_->clear();
    EXPECT_THAT(rows(view_), ElementsAre("Name of org.b, 6 key presses", "Name of org.a, 2 key presses"));
}

TEST_F(AppBreakdown, DrawsOnlyTheRowThatChanges) {
    press(20, "org.a");
    press(10, "org.b");
    QTest::qWait(20); // until the new row is where it stays
    PaintedRegion painted(list_->viewport());
    press(1, "org.b");
    EXPECT_EQ(painted.region, QRegion(list_->visualRect(list_->model()->index(1, 0))));
    painted.region = {};
    view_.refresh();
    QCoreApplication::processEvents();
    EXPECT_TRUE(painted.region.isEmpty());
    press(100, "org.a"); // wider than before: room is made in each row
    EXPECT_EQ(painted.region, QRegion(list_->viewport()->rect()));
}

TEST_F(AppBreakdown, IsReadWithTheKeyboard) {
    for (int i = 0; i < 12; ++i) {
        press(1, "org." + std::to_string(i));
    }
    QTest::keyClick(field_, Qt::Key_Tab);
    EXPECT_TRUE(list_->hasFocus());
    EXPECT_EQ(list_->currentIndex().row(), 0);
    QTest::keyClick(list_, Qt::Key_Down);
    EXPECT_EQ(list_->currentIndex().row(), 1);
    QTest::keyClick(list_, Qt::Key_PageDown);
    const int page = list_->currentIndex().row();
    EXPECT_GT(page, 2);
    QTest::keyClick(list_, Qt::Key_End);
    EXPECT_EQ(list_->currentIndex().row(), 11);
    EXPECT_EQ(list_->verticalScrollBar()->value(), list_->verticalScrollBar()->maximum());
    QTest::keyClick(list_, Qt::Key_Backtab);
    EXPECT_TRUE(field_->hasFocus());
}

TEST_F(AppBreakdown, TellsALongNameInFull) {
    const std::string name = "<b>" + std::string(200, 'n');
    press(20, "org.a");
    press(10, name);
    const auto toolTip = [&](int row) {
        const QPoint place = list_->visualRect(list_->model()->index(row, 0)).center();
        QHelpEvent event(QEvent::ToolTip, place, list_->viewport()->mapToGlobal(place));
        QCoreApplication::sendEvent(list_->viewport(), &event);
        return QToolTip::isVisible() ? QToolTip::text().toStdString() : "";
    };
    EXPECT_EQ(toolTip(1), "<span>Name of &lt;b&gt;" + std::string(200, 'n') + "</span>");
    QToolTip::hideText();
    EXPECT_TRUE(waitUntil([] { return !QToolTip::isVisible(); }));
    EXPECT_EQ(toolTip(0), "");
}

} // namespace
} // namespace fernhollow::tests
