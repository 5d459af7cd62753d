#include "App/Onboarding/OnboardingView.h"
#include "Support/TemporaryHome.h"

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <gmock/gmock.h>

namespace fernhollow::tests {
namespace {

class Onboarding : public testing::Test {
protected:
    Onboarding() { view_.resize(420, 600); }

    QPushButton* button(const char* text) {
        for (auto* candidate : view_.findChildren<QPushButton*>()) {
            if (candidate->isVisible() && candidate->text() == QString::fromUtf8(text)) {
                return candidate;
            }
        }
        return nullptr;
    }

    void click(const char* text) {
        ASSERT_NE(button(text), nullptr) << text;
        QTest::mouseClick(button(text), Qt::LeftButton);
    }

    bool shows(const char* text) {
        const auto labels = view_.findChildren<QLabel*>();
        return std::ranges::any_of(labels, [&](const QLabel* label) {
            return label->isVisible() && label->text() == QString::fromUtf8(text) &&
                   !label->visibleRegion().isEmpty();
        });
    }

    bool comesToShow(const char* text) {
        return QTest::qWaitFor([&] { return shows(text); });
    }

    EnvironmentGuard locale_{"LC_ALL", "en_US.UTF-8"};
    EnvironmentGuard language_{"LANGUAGE", ""};
    int completions_ = 0;
    OnboardingView view_{[this] { ++completions_; }};
};

TEST_F(Onboarding, GoesThroughItsStepsAndBack) {
    view_.show();
    EXPECT_TRUE(shows("Welcome to Fernhollow"));
    EXPECT_EQ(button("Previous"), nullptr);
    click("Next");
    EXPECT_TRUE(comesToShow("Today is Day 1"));
    EXPECT_EQ(button("Skip"), nullptr);
    click("Next");
    EXPECT_TRUE(comesToShow("Cloud sync"));
    click("Previous");
    EXPECT_TRUE(comesToShow("Your numbers will grow starting today!"));
    click("Next");
    click("Next"); // without waiting for the slide
    EXPECT_TRUE(comesToShow("All set!"));
    EXPECT_EQ(button("Next"), nullptr);
    EXPECT_EQ(completions_, 0);
    click("Get Started");
    click("Get Started");
    EXPECT_EQ(completions_, 1);
}

TEST_F(Onboarding, IsSkippedOnItsFirstStep) {
    view_.show();
    click("Skip");
    EXPECT_EQ(completions_, 1);
}

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

TEST_F(Onboarding, SpeaksThePersonsLanguage) {
    const EnvironmentGuard portuguese("LANGUAGE", "pt_BR:en");
    view_.show();
    EXPECT_TRUE(shows("Vamos começar sua jornada de produtividade"));
    EXPECT_NE(button("Pular"), nullptr);
    click("Próximo");
    EXPECT_NE(button("Anterior"), nullptr);
    click("Próximo");
    EXPECT_TRUE(comesToShow("Sincronização na nuvem"));
    click("Próximo");
    EXPECT_TRUE(comesToShow("Privacidade total — contamos quantas teclas, nunca o que você digita."));
    click("Começar");
    EXPECT_EQ(completions_, 1);
}

} // namespace
} // namespace fernhollow::tests
