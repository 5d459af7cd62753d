#include "App/Status/UpdateStatusButton.h"
#include "App/Status/UpdateStatusIcon.h"
#include "App/Widgets/ElidedLabel.h"
#include "App/Widgets/Theme.h"
#include "Support/FakeUpdaterController.h"
#include "Support/Testing.h"

#include <QHBoxLayout>
#include <QProxyStyle>
#include <QTest>

namespace fernhollow::tests {
namespace {

/// A style that animates whatever the desktop says.
class AnimatedStyle : public QProxyStyle {
public:
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* result) const override {
        return hint == SH_Widget_Animation_Duration ? 200
                                                    : QProxyStyle::styleHint(hint, option, widget, result);
    }
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

    const QString version_ = QStringLiteral("v") + QString::fromStdString(UpdateManager::currentVersion());
    TemporaryHome home_;
    FakelyUpdated fakes_;
    AnimatedStyle moving_;
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
    }
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
