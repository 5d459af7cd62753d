#include "App/Footer/AccountButton.h"
#include "App/Footer/DevicesPopover.h"
#include "App/MainWindow/MenuContentView.h"
#include "App/Shell/CountingState.h"
#include "App/Widgets.h"
#include "Model/ModelFixture.h"

#include <QApplication>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>

#include <algorithm>

namespace fernhollow::tests {
namespace {

/// The signed-in window at nine o'clock, with a list of devices that a test sets.
class Devices : public ModelFixture {
protected:
    Devices() {
        start();
        signIn("ana@example.com");
        view_ = std::make_unique<MenuContentView>(model_, account_, updates_.manager,
                                                  std::make_shared<CountingState>(), clock_);
        view_->resize(380, 500);
        view_->show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(view_.get()));
        button_ = view_->findChild<AccountButton*>();
    }

    void set(std::vector<DeviceInfo> devices) { account_->connectedDevices.set(std::move(devices)); }

    static std::vector<DeviceInfo> many(int count) {
        std::vector<DeviceInfo> devices;
        for (int i = 0; i < count; ++i) {
            devices.push_back({std::to_string(i), "machine", "2026-03-05T08:00:00Z"});
        }
        return devices;
    }

    DevicesPopover* popover() const {
        const auto found = shown<DevicesPopover>(*view_);
        return found.empty() ? nullptr : found.front();
    }
    void open() {
        QTest::mouseClick(button_, Qt::LeftButton);
        ASSERT_NE(popover(), nullptr);
    }

    /// What the open list says, below its heading.
    std::vector<std::string> texts() const {
        std::vector<std::string> texts;
        for (const auto* label : shown<QLabel>(*popover()->findChild<QScrollArea*>())) {
            texts.push_back(label->text().toStdString());
        }
        return texts;
    }
    /// The chevron that is shown.
    std::string chevron() const {
        for (const auto* name : {"chevron-up", "chevron-down"}) {
            const auto* symbol = button_->findChild<QWidget*>(QLatin1StringView(name));
            if (symbol && symbol->isVisible()) {
                return name;
            }
        }
        return "";
    }

    std::unique_ptr<MenuContentView> view_;
    AccountButton* button_ = nullptr;
};

TEST_F(Devices, AreListedInTheirOrderAndFollowTheAccount) {
    EXPECT_EQ(chevron(), "");
    open();
    EXPECT_THAT(texts(), ElementsAre("No devices found"));

    set({{"b", "desktop", "2026-03-02T09:00:00Z"}, {"a", "two\nlines", "nonsense"}});
    EXPECT_TRUE(waitUntil([&] { return texts().size() == 4; }));
    EXPECT_THAT(texts(), ElementsAre("desktop", "3 days ago", "two lines", "0 sec. ago"));
    EXPECT_EQ(chevron(), "chevron-up");

    set({{"a", "", "2026-03-05T09:00:00Z"},
         {model_->deviceId(), "mine", "2026-03-05T09:00:00Z"},
         {"b", "desktop", "2026-03-02T09:00:00Z"}});
    EXPECT_TRUE(waitUntil([&] { return texts().size() == 7; }));
    EXPECT_THAT(texts(), ElementsAre("desktop", "3 days ago", "Unnamed device", "0 sec. ago", "mine",
                                     "0 sec. ago", "This device"))
        << "in the places that they had";

    clock_.advance(std::chrono::minutes(5));
    set({{"a", "renamed", "2026-03-05T09:00:00Z"}});
    EXPECT_TRUE(waitUntil([&] { return texts().size() == 2; }));
    EXPECT_THAT(texts(), ElementsAre("renamed", "5 min. ago"));
    set({});
    EXPECT_TRUE(waitUntil([&] { return chevron().empty(); }));
    EXPECT_THAT(texts(), ElementsAre("No devices found"));
}

TEST_F(Devices, AreOpenedAndClosedByTheKeyboard) {
    set(many(1));
    EXPECT_TRUE(waitUntil([&] { return chevron() == "chevron-down"; }));
    for (const auto key : {Qt::Key_Space, Qt::Key_Return}) {
        button_->setFocus();
        QTest::keyClick(button_, key);
        ASSERT_NE(popover(), nullptr);
        EXPECT_TRUE(popover()->isAncestorOf(QApplication::focusWidget()));
        EXPECT_EQ(chevron(), "chevron-up");
        EXPECT_EQ(button_->accessibleDescription(), QStringLiteral("Hide connected devices"));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
        EXPECT_EQ(popover(), nullptr);
        EXPECT_EQ(QApplication::focusWidget(), button_);
        EXPECT_EQ(chevron(), "chevron-down");
        EXPECT_EQ(button_->accessibleDescription(), QStringLiteral("Show connected devices"));
    }
}

TEST_F(Devices, CloseByAPressOutsideOnTheAddressOrWithTheAccount) {
    open();
    QTest::mouseClick(popover()->findChild<QLabel*>(), Qt::LeftButton);
    EXPECT_NE(popover(), nullptr);
    QTest::mouseClick(button_->findChild<QLabel*>(), Qt::LeftButton); // one toggle, not two
    EXPECT_EQ(popover(), nullptr);

    open();
    QTest::mouseClick(view_.get(), Qt::LeftButton, {}, {370, 20});
    EXPECT_EQ(popover(), nullptr);

    open();
    account_->signOut();
    EXPECT_TRUE(waitUntil([&] { return popover() == nullptr; }));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(view_->findChildren<DevicesPopover*>().isEmpty());
}

TEST_F(Devices, ScrollWhereTheWindowIsTooLow) {
    set(many(30));
    open();
    const auto* bar = popover()->findChild<QScrollArea*>()->verticalScrollBar();
    EXPECT_TRUE(waitUntil([&] { return bar->isVisible() && bar->maximum() > 0; }));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_PageDown);
    const int scrolled = bar->value();
    EXPECT_GT(scrolled, 0);
    set(many(29));
    EXPECT_TRUE(waitUntil([&] { return texts().size() == 58; })); // 29 names, 29 times
    EXPECT_EQ(bar->value(), scrolled);
    EXPECT_TRUE(view_->rect().contains(popover()->geometry()));
    EXPECT_LT(popover()->geometry().bottom(), button_->mapTo(view_.get(), QPoint()).y());
}

} // namespace
} // namespace fernhollow::tests
