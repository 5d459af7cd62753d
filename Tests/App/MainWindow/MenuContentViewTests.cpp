#include "App/MainWindow/MainWindowController.h"
#include "App/MainWindow/MenuContentView.h"
#include "App/Shell/AppStateHolder.h"
#include "App/Shell/CountingState.h"
#include "App/Status/UpdateStatusButton.h"
#include "App/Widgets.h"
#include "Model/ModelFixture.h"

#include <QLineEdit>
#include <QPushButton>
#include <QTest>

namespace fernhollow::tests {
namespace {

class MainWindow : public ModelFixture {
protected:
    MainWindow() {
        start();
        open();
    }

    void open() {
        view_ = std::make_unique<MenuContentView>(model_, account_, updates_.manager, counting_, clock_);
        view_->resize(380, 500);
        view_->show();
    }

    template<class Widget>
    Widget* shown(const QString& name) {
        return tests::shown<Widget>(*view_, name);
    }
    bool appears(const QString& text) {
        return waitUntil([&] { return shown<QLabel>(text) != nullptr; });
    }

    void signInByTyping(const QString& text) {
        QTest::keyClicks(shown<QLineEdit>(QStringLiteral("Email")), text);
        QTest::keyClick(shown<QLineEdit>(QStringLiteral("Email")), Qt::Key_Return);
    }

    std::shared_ptr<CountingState> counting_ = std::make_shared<CountingState>();
    std::unique_ptr<MenuContentView> view_;
};

TEST_F(MainWindow, SignsInWithTheKeyboardAlone) {
    auto* button = shown<QPushButton>(QStringLiteral("Sign In"));
    ASSERT_NE(button, nullptr);
    EXPECT_FALSE(button->isEnabled());
    EXPECT_EQ(shown<QPushButton>(QStringLiteral("Sign Out")), nullptr);
    EXPECT_NE(shown<QPushButton>(QStringLiteral("Quit")), nullptr);
    QTest::keyClick(shown<QLineEdit>(QStringLiteral("Email")), Qt::Key_Return); // nothing to sign in with

    signInByTyping(QStringLiteral(" Ana@Example.com "));
    EXPECT_TRUE(appears(QStringLiteral("ana@example.com")));
    EXPECT_TRUE(appears(QStringLiteral("Welcome to Fernhollow")));
    EXPECT_EQ(shown<QLineEdit>(QStringLiteral("Email")), nullptr);
}

TEST_F(MainWindow, SaysWhyASignInWasRefusedAndKeepsWhatWasTyped) {
    signInByTyping(QStringLiteral("ana"));
    EXPECT_TRUE(appears(QStringLiteral("Invalid email address")));
    EXPECT_EQ(shown<QLineEdit>(QStringLiteral("Email"))->text(), QStringLiteral("ana"));
    signInByTyping(QStringLiteral("@example.com"));
    EXPECT_TRUE(appears(QStringLiteral("ana@example.com")));
    EXPECT_EQ(shown<QLabel>(QStringLiteral("Invalid email address")), nullptr);
}

TEST_F(MainWindow, IntroducesItselfToEachAccountOnce) {
    signInByTyping(QStringLiteral("ana@example.com"));
    ASSERT_TRUE(appears(QStringLiteral("Welcome to Fernhollow")));
    QTest::mouseClick(shown<QPushButton>(QStringLiteral("Next")), Qt::LeftButton);
    EXPECT_TRUE(appears(QStringLiteral("Today is Day 1")));

    account_->signOut();
    ASSERT_TRUE(waitUntil([&] { return shown<QLineEdit>(QStringLiteral("Email")) != nullptr; }));
    EXPECT_FALSE(shown<QLineEdit>(QStringLiteral("Email"))->hasSelectedText());
    QTest::keyClick(shown<QLineEdit>(QStringLiteral("Email")), Qt::Key_Return); // it kept the address
    ASSERT_TRUE(waitUntil([&] { return shown<QPushButton>(QStringLiteral("Skip")) != nullptr; }));
    QTest::mouseClick(shown<QPushButton>(QStringLiteral("Skip")), Qt::LeftButton);
    EXPECT_TRUE(appears(QStringLiteral("Week Comparison")));

    account_->signOut();
    await(account_->verifyEmail("ana@example.com"));
    EXPECT_TRUE(appears(QStringLiteral("Week Comparison")));
    await(account_->verifyEmail("bea@example.com"));
    EXPECT_TRUE(appears(QStringLiteral("Welcome to Fernhollow")));
}

TEST_F(MainWindow, KeepsOneLineForALongAddress) {
    const QString address =
        QString(60, u'a') + QStringLiteral("@") + QString(60, u'b') + QStringLiteral(".example.com");
    signInByTyping(address);
    auto* label = view_->findChild<QLabel*>();
    EXPECT_TRUE(
        waitUntil([&] { return (label = shown<QLabel>(address)) != nullptr; })); // by its accessible name
    EXPECT_TRUE(waitUntil([&] { return label->text().contains(u'…'); }));
    EXPECT_EQ(label->toolTip(), address);
    EXPECT_LE(view_->width(), 400);
    auto* version = view_->findChild<UpdateStatusButton*>();
    EXPECT_EQ(version->width(), version->sizeHint().width()) << "the address gives way, not the version";
    EXPECT_LT(label->geometry().right(), shown<QPushButton>(QStringLiteral("Sign Out"))->geometry().left());
}

TEST_F(MainWindow, SaysThatCountsAreNotSavedWhileTheyAreNot) {
    const QString sentence = QStringLiteral("Your counts are not being saved. Fernhollow keeps trying.");
    signInByTyping(QStringLiteral("ana@example.com"));
    ASSERT_TRUE(appears(QStringLiteral("ana@example.com")));
    std::optional<OtherConnection> other(std::in_place);
    press(3);
    flush();
    ASSERT_TRUE(appears(sentence));
    auto* label = shown<QLabel>(sentence);
    EXPECT_GE(label->height(), label->heightForWidth(label->width())) << "all of it can be read";
    other.reset();
    flush();
    EXPECT_TRUE(waitUntil([&] { return shown<QLabel>(sentence) == nullptr; }));
}

TEST_F(MainWindow, SaysWhyNothingIsCountedAndOffersTheRemedy) {
    int performed = 0;
    counting_->setProblem(
        {"The service is off.", "Turn it on.", TrustAction{"Turn On", [&] { ++performed; }}});
    EXPECT_TRUE(
        appears(QStringLiteral("Key presses are not being counted. The service is off. Turn it on.")));
    QTest::mouseClick(shown<QPushButton>(QStringLiteral("Turn On")), Qt::LeftButton);
    EXPECT_EQ(performed, 1);

    model_->isPaused.set(true); // which the person did, so it comes first
    EXPECT_TRUE(waitUntil([&] { return shown<QPushButton>(QStringLiteral("Resume")) != nullptr; }));
    QTest::mouseClick(shown<QPushButton>(QStringLiteral("Resume")), Qt::LeftButton);
    EXPECT_FALSE(model_->isPaused.get());

    counting_->started();
    EXPECT_TRUE(waitUntil([&] { return shown<QPushButton>(QStringLiteral("Turn On")) == nullptr; }));
    for (int second = 1; second < 5; ++second) {
        counting_->startFailed();
        EXPECT_FALSE(counting_->isRefused.get()) << "the desktop may not have answered yet";
    }
    counting_->startFailed();
    EXPECT_TRUE(counting_->isRefused.get());
}

TEST_F(MainWindow, IsOneWindowThatIsHiddenAndShownAgain) {
    auto& controller = MainWindowController::shared();
    const AppStateHolder objects{model_, account_, updates_.manager, counting_, &clock_};
    controller.toggle(objects, {});
    QWidget* window = windowTitled(QStringLiteral("Fernhollow"));
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(window->size(), QSize(420, 750));
    EXPECT_EQ(window->minimumSize(), QSize(380, 500));
    controller.toggle(objects, {});
    EXPECT_FALSE(window->isVisible());
    controller.show(objects, {});
    controller.show(objects, {});
    EXPECT_TRUE(window->isVisible());
    window->setGeometry(30, 40, 500, 600);
    controller.close();
    EXPECT_EQ(windowTitled(QStringLiteral("Fernhollow")), nullptr) << "there was one window";
    controller.show(objects, {}); // as the next start of the program does
    EXPECT_EQ(windowTitled(QStringLiteral("Fernhollow"))->size(), QSize(500, 600));
    controller.close();
}

} // namespace
} // namespace fernhollow::tests
