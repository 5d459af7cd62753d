#include "App/Status/UpdateStatusButton.h"
#include "App/Status/UpdateStatusIcon.h"
#include "App/Widgets/ElidedLabel.h"
#include "App/Widgets/Theme.h"
#include "Support/EventLoop.h"
#include "Support/FakeUpdaterController.h"
#include "Support/TemporaryHome.h"

#include <QHBoxLayout>
#include <QProxyStyle>
#include <QTest>
#include <gmock/gmock.h>

namespace fernhollow::tests {
namespace {

/// A style that animates, or does not, whatever the desktop says.
class AnimationStyle : public QProxyStyle {
public:
    explicit AnimationStyle(bool animates) : animates_(animates) {}
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* result) const override {
        return hint == SH_Widget_Animation_Duration ? (animates_ ? 200 : 0)
                                                    : QProxyStyle::styleHint(hint, option, widget, result);
    }

private:
    bool animates_;
};

class StatusButton : public testing::Test {
protected:
    StatusButton() {
        auto* layout = new QHBoxLayout(&footer_);
        layout->addWidget(&button_);
        footer_.resize(300, 60);
        show();
    }

    void show() {
        footer_.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&footer_));
    }

    void enter(const UpdateState& state) { fakes_.manager->state.set(state); }

    bool becomes(const QString& text) {
        return waitUntil([&] { return label().text() == text; });
    }

    ElidedLabel& label() { return *button_.findChild<ElidedLabel*>(); }
    UpdateStatusIcon& icon() { return *button_.findChild<UpdateStatusIcon*>(); }

    // How many pixels have about this colour.
    static int pixels(QWidget& widget, const QColor& color) {
        const QImage image = widget.grab().toImage();
        int found = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const QColor pixel = image.pixelColor(x, y);
                found += std::abs(pixel.red() - color.red()) + std::abs(pixel.green() - color.green()) +
                             std::abs(pixel.blue() - color.blue()) <
                         40;
            }
        }
        return found;
    }

    const QString version_ = QStringLiteral("v") + QString::fromStdString(UpdateManager::currentVersion());
    TemporaryHome home_;
    FakelyUpdated fakes_;
    AnimationStyle moving_{true};
    AnimationStyle still_{false};
    QWidget footer_;
    UpdateStatusButton& button_ = *new UpdateStatusButton(fakes_.manager);
};

TEST_F(StatusButton, ShowsEachStateInItsWordsColourAndPicture) {
    struct Row {
        UpdateState state;
        QString text;
        QString help;
        QColor color;
        QString icon;
    };
    const QString latest =
        QStringLiteral("You're running the latest version (") + version_ + QStringLiteral(")");
    const std::vector<Row> rows{
        {UpdateIdle{}, version_, latest, Theme::secondary, QStringLiteral("check-circle-fill")},
        {UpdateChecking{}, QStringLiteral("Checking..."), QStringLiteral("Checking for updates..."),
         Theme::secondary, QStringLiteral("spinner")},
        {UpdateAvailable{"0.3.0"}, QStringLiteral("v0.3.0"), QStringLiteral("Update available: v0.3.0"),
         Theme::failure, QStringLiteral("arrow-down-circle-fill")},
        {UpdateDownloading{0}, QStringLiteral("0%"), QStringLiteral("Downloading update..."),
         Theme::highlight, QStringLiteral("ring")},
        {UpdateDownloading{0.579}, QStringLiteral("57%"), QStringLiteral("Downloading update..."),
         Theme::highlight, QStringLiteral("ring")},
        {UpdateReadyToInstall{}, QStringLiteral("Restart"),
         QStringLiteral("Click to restart and apply update"), Theme::success,
         QStringLiteral("arrow-down-circle-fill")},
        {UpdateUpToDate{}, version_, latest, Theme::secondary, QStringLiteral("check-circle-fill")},
        {UpdateFailed{"No answer."}, QStringLiteral("Error"), QStringLiteral("Error: No answer."),
         Theme::failure, QStringLiteral("exclamation-circle-fill")},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(describe(row.state));
        enter(row.state);
        EXPECT_TRUE(becomes(row.text));
        EXPECT_EQ(button_.toolTip(), row.help);
        EXPECT_EQ(button_.accessibleName(), row.text);
        EXPECT_EQ(button_.accessibleDescription(), row.help);
        EXPECT_EQ(icon().objectName(), row.icon);
        EXPECT_EQ(label().palette().color(QPalette::WindowText), row.color);
        if (row.icon != QStringLiteral("ring")) {
            EXPECT_GT(pixels(icon(), row.color), 0);
        }
    }
}

TEST_F(StatusButton, FillsTheRingWithTheProgress) {
    int before = -1;
    for (const double progress : {0.0, 0.25, 0.5, 1.0}) {
        enter(UpdateDownloading{progress});
        ASSERT_TRUE(becomes(QString::number(static_cast<int>(progress * 100)) + QStringLiteral("%")));
        const int filled = pixels(icon(), Theme::highlight);
        EXPECT_GT(filled, before);
        before = filled;
    }
    enter(UpdateDownloading{0});
    ASSERT_TRUE(becomes(QStringLiteral("0%")));
    EXPECT_EQ(pixels(icon(), Theme::highlight), 0);
}

TEST_F(StatusButton, ChecksAtAClickExceptWhileSomethingIsUnderWay) {
    for (const UpdateState& state :
         std::initializer_list<UpdateState>{UpdateChecking{}, UpdateDownloading{}}) {
        enter(state);
        QTest::mouseClick(&button_, Qt::LeftButton);
        EXPECT_EQ(fakes_.updater->checks, 0);
    }
    int checks = 0;
    for (const UpdateState& state :
         std::initializer_list<UpdateState>{UpdateIdle{}, UpdateUpToDate{}, UpdateAvailable{"1"},
                                            UpdateReadyToInstall{}, UpdateFailed{"x"}}) {
        enter(state);
        QTest::mouseClick(&button_, Qt::LeftButton);
        EXPECT_EQ(fakes_.updater->checks, ++checks);
        EXPECT_EQ(fakes_.manager->state.get(), UpdateState(UpdateChecking{}));
    }
    enter(UpdateIdle{});
    button_.setFocus();
    QTest::keyClick(&button_, Qt::Key_Space);
    EXPECT_EQ(fakes_.updater->checks, checks + 1);
}

TEST_F(StatusButton, DrawsNothingWhileHiddenAndIsRightWhenShown) {
    footer_.hide();
    const QString before = label().text();
    enter(UpdateFailed{"x"});
    QTest::qWait(40); // longer than a frame
    EXPECT_EQ(label().text(), before);
    show();
    EXPECT_EQ(label().text(), QStringLiteral("Error"));
}

TEST_F(StatusButton, TurnsOnlyWhileItCanBeSeen) {
    icon().setStyle(&moving_);
    enter(UpdateChecking{});
    ASSERT_TRUE(becomes(QStringLiteral("Checking...")));
    EXPECT_TRUE(icon().isTurning());
    const QImage first = icon().grab().toImage();
    EXPECT_TRUE(waitUntil([&] { return icon().grab().toImage() != first; }));
    footer_.hide();
    EXPECT_FALSE(icon().isTurning());
    show();
    EXPECT_TRUE(icon().isTurning());
    enter(UpdateUpToDate{});
    ASSERT_TRUE(becomes(version_));
    EXPECT_FALSE(icon().isTurning());

    icon().setStyle(&still_);
    enter(UpdateChecking{});
    ASSERT_TRUE(becomes(QStringLiteral("Checking...")));
    EXPECT_FALSE(icon().isTurning());
}

TEST_F(StatusButton, ReadsNoMarkupAndShortensOnlyLongVersions) {
    enter(UpdateFailed{"<b>bold</b> claims"});
    ASSERT_TRUE(becomes(QStringLiteral("Error")));
    EXPECT_FALSE(button_.toolTip().contains(QStringLiteral("<b>")));
    EXPECT_TRUE(button_.toolTip().contains(QStringLiteral("&lt;b&gt;")));

    enter(UpdateAvailable{std::string(100, '9')});
    footer_.resize(150, 60);
    EXPECT_LE(footer_.width(), 160);
    EXPECT_TRUE(waitUntil([&] { return label().text().endsWith(u'…'); }));
    EXPECT_EQ(button_.accessibleName().size(), 101);
}

} // namespace
} // namespace fernhollow::tests
