#include "App/AppListFixture.h"
#include "App/Dashboard/AppBreakdownView.h"
#include "App/Widgets.h"

#include <QHelpEvent>
#include <QLineEdit>
#include <QScrollBar>
#include <QToolTip>
#include <QWheelEvent>

#include <cstdint>

namespace fernhollow::tests {
namespace {

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
        for (const auto* label : shown<QLabel>(view_)) {
            text += label->text().toStdString() + " ";
        }
        return text;
    }

    AppBreakdownView view_{model_, clock_};
    AppListView* list_ = view_.findChild<AppListView*>();
    QLineEdit* field_ = view_.findChild<QLineEdit*>();
};

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
    EXPECT_EQ(list_->accessibleDescription(), QStringLiteral("No app is called “ORG.Bx”"));
    field_->clear();
    EXPECT_EQ(list_->accessibleDescription(), QString());
    EXPECT_THAT(rows(view_), ElementsAre("Name of org.b, 6 key presses", "Name of org.a, 2 key presses"));
}

TEST_F(AppBreakdown, IsReadWithTheKeyboard) {
    for (int i = 0; i < 12; ++i) {
        press(1, "org." + std::to_string(i));
    }
    EXPECT_EQ(list_->height(), list_->minimumHeight());
    QTest::keyClick(field_, Qt::Key_Tab);
    EXPECT_TRUE(list_->hasFocus());
    EXPECT_EQ(list_->currentIndex().row(), 0);
    QTest::keyClick(list_, Qt::Key_Down);
    EXPECT_EQ(list_->currentIndex().row(), 1);
    QTest::keyClick(list_, Qt::Key_End);
    EXPECT_EQ(list_->currentIndex().row(), 11);
    EXPECT_EQ(list_->verticalScrollBar()->value(), list_->verticalScrollBar()->maximum());
    view_.resize(380, 900);
    QCoreApplication::processEvents();
    EXPECT_EQ(list_->height(), list_->heightOf(12)) << "it takes the room that there is, and no more";
    EXPECT_LT(view_.height(), 900);
    QTest::keyClick(list_, Qt::Key_Backtab);
    EXPECT_TRUE(field_->hasFocus());
}

TEST_F(AppBreakdown, KeepsATurnOfTheWheelToItsEnd) {
    for (int i = 0; i < 12; ++i) {
        press(1, "org." + std::to_string(i));
    }
    const auto turn = [this](int degrees) {
        const QPointF at = list_->viewport()->rect().center();
        QWheelEvent wheel(at, list_->viewport()->mapToGlobal(at), {}, {0, degrees}, {}, {}, {}, false);
        wheel.ignore();
        QApplication::sendEvent(list_->viewport(), &wheel);
        return wheel.isAccepted();
    };
    EXPECT_FALSE(turn(120)) << "the list is at its top, so what lies around it moves";
    EXPECT_TRUE(turn(-120));
    EXPECT_TRUE(turn(1200));
    EXPECT_EQ(list_->verticalScrollBar()->value(), 0);
    EXPECT_TRUE(turn(120)) << "the same turn still";
    QTest::qWait(500);
    EXPECT_FALSE(turn(120)) << "a new one";
}

} // namespace
} // namespace fernhollow::tests
