#include "App/Onboarding/OnboardingView.h"
#include "App/Widgets.h"
#include "Support/Testing.h"

#include <QPushButton>
#include <QTest>

namespace fernhollow::tests {
namespace {

class Onboarding : public testing::Test {
protected:
    Onboarding() { view_.resize(420, 600); }

    QPushButton* button(const char* text) { return shown<QPushButton>(view_, QString::fromUtf8(text)); }

    void click(const char* text) {
        ASSERT_NE(button(text), nullptr) << text;
        QTest::mouseClick(button(text), Qt::LeftButton);
    }

    bool shows(const char* text) {
        const auto* label = shown<QLabel>(view_, QString::fromUtf8(text));
        return label && !label->visibleRegion().isEmpty();
    }

    bool comesToShow(const char* text) {
        return QTest::qWaitFor([&] { return shows(text); });
    }

    EnvironmentGuard locale_{"LC_ALL", "en_US.UTF-8"};
    EnvironmentGuard language_{"LANGUAGE", ""};
    int completions_ = 0;
    OnboardingView view_{[this] { ++completions_; }};
};

TEST_F(Onboarding, IsOperatedByTheKeyboardAlone) {
    view_.show();
    view_.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&view_));
    view_.setFocus();
    QWidget* next = button("Next");
    ASSERT_EQ(QApplication::focusWidget(), next);
    EXPECT_TRUE(next->accessibleDescription().contains(QStringLiteral("Welcome to Fernhollow")));
    QTest::keyClick(next, Qt::Key_Return);
    EXPECT_EQ(view_.currentStep(), 1);
    QTest::keyClick(next, Qt::Key_Backtab);
    ASSERT_EQ(QApplication::focusWidget(), button("Previous"));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
    EXPECT_EQ(view_.currentStep(), 0);
    EXPECT_EQ(QApplication::focusWidget(), next) << "and not the button that skips";
    for (int step = 0; step < 4; ++step) {
        QTest::keyClick(next, Qt::Key_Space);
    }
    EXPECT_EQ(completions_, 1);
}

TEST_F(Onboarding, GoesThroughItsStepsAndBackInThePersonsLanguage) {
    const EnvironmentGuard portuguese("LANGUAGE", "pt_BR:en");
    view_.show();
    EXPECT_TRUE(shows("Vamos começar sua jornada de produtividade"));
    EXPECT_EQ(button("Anterior"), nullptr);
    EXPECT_NE(button("Pular"), nullptr);
    click("Próximo");
    EXPECT_TRUE(comesToShow("Hoje é o Dia 1"));
    EXPECT_EQ(button("Pular"), nullptr);
    click("Próximo");
    EXPECT_TRUE(comesToShow("Sincronização na nuvem"));
    click("Anterior");
    EXPECT_TRUE(comesToShow("Hoje é o Dia 1"));
    click("Próximo");
    click("Próximo"); // without waiting for the slide
    EXPECT_TRUE(comesToShow("Privacidade total — contamos quantas teclas, nunca o que você digita."));
    EXPECT_EQ(button("Próximo"), nullptr);
    EXPECT_EQ(completions_, 0);
    click("Começar");
    click("Começar");
    EXPECT_EQ(completions_, 1);
}

TEST_F(Onboarding, ScrollsWithTheKeyboardWhereAStepIsHigherThanItsRoom) {
    view_.resize(380, 260);
    view_.show();
    click("Next");
    const char* last = "Your numbers will grow starting today!";
    EXPECT_TRUE(QTest::qWaitFor([&] { return !shows("Welcome to Fernhollow"); }));
    EXPECT_FALSE(shows(last));
    for (int page = 0; page < 4; ++page) {
        QTest::keyClick(button("Next"), Qt::Key_PageDown);
    }
    EXPECT_TRUE(comesToShow(last));
    click("Next");
    click("Previous");
    EXPECT_TRUE(QTest::qWaitFor([&] { return !shows("How it works"); }));
    EXPECT_FALSE(shows(last)) << "a step begins at its top";
}

TEST_F(Onboarding, ChangesAtOnceForWhoWantsNothingToMove) {
    view_.setStyleSheet(QStringLiteral("* { widget-animation-duration: 0; }"));
    view_.show();
    click("Next");
    EXPECT_TRUE(shows("Today is Day 1"));
    EXPECT_FALSE(shows("Welcome to Fernhollow"));
}

} // namespace
} // namespace fernhollow::tests
