#include "App/Updates/StandardUserDriver.h"
#include "App/Updates/UpdatePages.h"
#include "App/Updates/UpdateWindow.h"
#include "App/Widgets.h"
#include "Support/Releases.h"
#include "Support/Testing.h"

#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>

#include <cstdint>

namespace fernhollow::tests {
namespace {

class Windows : public testing::Test {
protected:
    static UpdateWindow* window() {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (auto* found = dynamic_cast<UpdateWindow*>(widget)) {
                return found;
            }
        }
        return nullptr;
    }

    template<class Widget>
    static std::vector<Widget*> shown() {
        return tests::shown<Widget>(*window());
    }
    static std::string texts() {
        std::string all;
        for (const QLabel* label : shown<QLabel>()) {
            all += label->text().toStdString() + "\n";
        }
        return all;
    }

    static std::vector<std::string> buttons() {
        std::vector<std::string> names;
        for (const QPushButton* button : shown<QPushButton>()) {
            names.push_back(button->text().toStdString());
        }
        return names;
    }

    static void press(const char* name) {
        auto* button = tests::shown<QPushButton>(*window(), QString::fromUtf8(name));
        ASSERT_NE(button, nullptr) << name;
        QTest::mouseClick(button, Qt::LeftButton);
    }
    template<class T>
    static QCoro::Task<> ask(QCoro::Task<T> question, std::optional<T>* answer) {
        answer->emplace(co_await question);
    }

    std::optional<UpdateChoice> offer(const AppcastItem& item, const std::function<void()>& act,
                                      bool canInstall = true, bool isGentle = false) {
        std::optional<UpdateChoice> answer;
        ask(driver_.showUpdateFound(item, canInstall, isGentle), &answer);
        EXPECT_EQ(answer, std::nullopt);
        act();
        return answer;
    }

    // Whatever the page says lies within the window, in its full height.
    static void expectNothingIsClipped() {
        for (const QLabel* label : shown<QLabel>()) {
            EXPECT_GE(label->height(), label->hasHeightForWidth() ? label->heightForWidth(label->width()) : 1)
                << label->text().toStdString();
        }
        for (const QPushButton* button : shown<QPushButton>()) {
            EXPECT_GE(button->width(), button->sizeHint().width()) << button->text().toStdString();
            EXPECT_TRUE(window()->rect().contains(QRect(button->mapTo(window(), QPoint()), button->size())));
        }
    }

    TemporaryHome home_;
    EnvironmentGuard locale_{"LC_ALL", "en_US.UTF-8"};
    StandardUserDriver driver_{"0.2.0", QDBusConnection(QStringLiteral("no bus"))};
};

TEST_F(Windows, OfferAReleaseAndAreWorkedWithTheKeyboardAlone) {
    EXPECT_EQ(offer(release("0.3.0"),
                    [] {
                        EXPECT_THAT(texts(), HasSubstr("Fernhollow 0.3.0 is available; you have 0.2.0."));
                        EXPECT_THAT(buttons(),
                                    ElementsAre("Skip This Version", "Remind Me Later", "Install Update"));
                        for (const QPushButton* button : shown<QPushButton>()) {
                            EXPECT_EQ(button->focusPolicy(), Qt::StrongFocus);
                        }
                        expectNothingIsClipped();
                        press("Skip This Version");
                    }),
              UpdateChoice::skip);
    EXPECT_EQ(offer(release("0.3.0"), [] { QTest::keyClick(window(), Qt::Key_Return); }),
              UpdateChoice::install);
    EXPECT_EQ(offer(release("0.3.0"), [] { QTest::keyClick(window(), Qt::Key_Escape); }),
              UpdateChoice::later);
    EXPECT_FALSE(window()->isVisible());
    const auto close = [] {
        EXPECT_THAT(buttons(), ElementsAre("Close"));
        EXPECT_THAT(texts(), HasSubstr("This build is updated from its source."));
        window()->close();
    };
    EXPECT_EQ(offer(release("0.3.0"), close, false), UpdateChoice::later) << "nothing can be installed here";
}

TEST_F(Windows, ReadsNoMarkupAndKeepsItsSizeForAnyFeed) {
    AppcastItem item = release(std::string(500, '3'));
    item.releaseNotes = "<a href=\"https://example.org\">click</a>";
    for (int line = 0; line < 2000; ++line) {
        item.releaseNotes += "\n<b>" + std::to_string(line) + "</b> " + std::string(200, 'x');
    }
    offer(item, [&] {
        EXPECT_EQ(shown<QPlainTextEdit>().front()->toPlainText().toStdString(), item.releaseNotes);
        EXPECT_LE(window()->width(), 700);
        EXPECT_LE(window()->height(), 600);
        for (const QLabel* label : shown<QLabel>()) {
            EXPECT_TRUE(label->textFormat() == Qt::PlainText || label->text().isEmpty());
        }
        expectNothingIsClipped();
        driver_.dismiss();
    });
    driver_.showError(std::string(5000, 'e'));
    EXPECT_LE(window()->width(), 700);
    EXPECT_LE(window()->height(), 700);
    expectNothingIsClipped();
}

TEST_F(Windows, KeepsAGentleOfferOutOfSightUntilItIsAskedFor) {
    const auto look = [this] {
        EXPECT_FALSE(window()->isVisible());
        driver_.focus();
        EXPECT_TRUE(window()->isVisible());
        press("Remind Me Later");
    };
    EXPECT_EQ(offer(release("0.3.0"), look, true, true), UpdateChoice::later);
    driver_.dismiss();
    driver_.focus(); // there is nothing to show any more
    EXPECT_FALSE(window()->isVisible());
}

TEST_F(Windows, AsksForPermissionWithoutTakingTheKeyboard) {
    for (const auto& [name, answer] : std::vector<std::pair<const char*, std::optional<bool>>>{
             {"Check Automatically", true}, {"Don’t Check", false}, {nullptr, std::nullopt}}) {
        std::optional<std::optional<bool>> given;
        ask(driver_.askPermission(), &given);
        EXPECT_TRUE(window()->testAttribute(Qt::WA_ShowWithoutActivating));
        expectNothingIsClipped();
        if (name != nullptr) {
            press(name);
        } else {
            window()->close();
        }
        ASSERT_TRUE(given.has_value());
        EXPECT_EQ(*given, answer);
        driver_.dismiss();
    }
}

TEST_F(Windows, ShowsADownloadAndLetsItBeCancelled) {
    int cancelled = 0;
    driver_.showChecking([&] { ++cancelled; });
    QTest::keyClick(window(), Qt::Key_Return);
    EXPECT_EQ(cancelled, 0) << "only on purpose";
    press("Cancel");
    driver_.showChecking([&] { ++cancelled; });
    QTest::keyClick(window(), Qt::Key_Escape);
    EXPECT_EQ(cancelled, 2);
    window()->show();
    driver_.showDownloading(release("0.3.0"), [&] { ++cancelled; });
    QProgressBar* const bar = shown<QProgressBar>().front();
    for (const auto& [received, amount] :
         std::vector<std::pair<std::uint64_t, std::string>>{{0, "0 bytes of 12.0 MB"},
                                                            {6'000'000, "6.0 MB of 12.0 MB"},
                                                            {12'000'000, "12.0 MB of 12.0 MB"}}) {
        driver_.showProgress(received, 12'000'000);
        EXPECT_THAT(texts(), HasSubstr(amount));
        EXPECT_EQ(static_cast<std::uint64_t>(bar->value()) * 12'000'000 / 1000, received);
    }
    window()->close();
    EXPECT_EQ(cancelled, 3);
}

TEST_F(Windows, SaysHowItEnded) {
    driver_.showChecking([] {});
    driver_.showUpToDate("0.2.0");
    EXPECT_THAT(texts(), HasSubstr("Version 0.2.0 is the newest version."));
    press("OK");
    EXPECT_FALSE(window()->isVisible());
    driver_.showError("The file is not signed.");
    EXPECT_THAT(texts(), HasSubstr("The file is not signed."));
    QTest::keyClick(window(), Qt::Key_Escape);
    EXPECT_FALSE(window()->isVisible());
    driver_.showNote("Open the folder.");
    EXPECT_THAT(texts(), HasSubstr("Open the folder."));
}

TEST_F(Windows, WritesAmountsInTheUsersLocale) {
    const EnvironmentGuard german("LC_ALL", "de_DE.UTF-8");
    EXPECT_EQ(UpdatePages::downloadedAmount(1'500'000, 12'000'000), QStringLiteral("1,5 MB of 12,0 MB"));
    EXPECT_EQ(UpdatePages::downloadedAmount(1'500'000, 0), QStringLiteral("1,5 MB"));
}

} // namespace
} // namespace fernhollow::tests
