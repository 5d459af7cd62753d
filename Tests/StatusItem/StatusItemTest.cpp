#include "Platform/StatusItem/StatusItem.h"

#include "FakeNotifierHost.h"
#include "Platform/StatusItem/NotifierTypes.h"
#include "Platform/StatusItem/StatusNotifier.h"
#include "Support/EventLoop.h"

#include <QElapsedTimer>
#include <gmock/gmock.h>

namespace fernhollow::tests {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::Ge;
using testing::IsEmpty;
using testing::Le;

bool waitUntilShown(const StatusItem& item, bool shown = true) {
    return waitUntil([&] { return item.isShown() == shown; });
}

void pause(int milliseconds) {
    QElapsedTimer timer;
    timer.start();
    waitUntil([&] { return timer.elapsed() >= milliseconds; });
}

} // namespace

TEST(StatusItemPresence, AppearsInABarThatIsThere) {
    FakeNotifierHost bar;
    const StatusItem item;
    EXPECT_TRUE(waitUntilShown(item));
    EXPECT_EQ(bar.items.size(), 1);
}

TEST(StatusItemPresence, AppearsInABarThatComesLaterAndInItsSuccessor) {
    const StatusItem item;
    std::vector<bool> changes;
    QObject::connect(&item, &StatusItem::shownChanged, &item, [&](bool shown) { changes.push_back(shown); });
    pause(100);
    EXPECT_FALSE(item.isShown());
    {
        FakeNotifierHost bar;
        EXPECT_TRUE(waitUntilShown(item));
    }
    EXPECT_TRUE(waitUntilShown(item, false));
    FakeNotifierHost successor;
    EXPECT_TRUE(waitUntilShown(item));
    EXPECT_EQ(successor.items.size(), 1);
    EXPECT_THAT(changes, ElementsAre(true, false, true));
}

TEST(StatusItemPresence, FollowsTheHostsOfAWatcherThatStays) {
    FakeNotifierHost bar(false);
    const StatusItem item;
    ASSERT_TRUE(waitUntil([&] { return bar.items.size() == 1; }));
    pause(100);
    EXPECT_FALSE(item.isShown());
    bar.setHost(true);
    EXPECT_TRUE(waitUntilShown(item));
    bar.setHost(false);
    EXPECT_TRUE(waitUntilShown(item, false));
}

TEST(StatusItemPresence, DoesWithoutABus) {
    StatusNotifier notifier(QDBusConnection(QStringLiteral("no such connection")),
                            StatusNotifier::Icons::SquareIcons);
    notifier.setTitle(u"42"_qs);
    EXPECT_FALSE(notifier.isShown());
    EXPECT_EQ(notifier.watcher(), StatusNotifier::Watcher::Absent);
}

class StatusItemInABar : public testing::Test {
protected:
    void SetUp() override {
        item.setTitle(u"12,345"_qs);
        ASSERT_TRUE(waitUntilShown(item));
        pause(60); // what follows is the first change for a while
    }

    FakeNotifierHost bar;
    StatusItem item;
};

TEST_F(StatusItemInABar, TellsAHostWhatItAsks) {
    const auto properties = bar.properties();
    EXPECT_EQ(properties[u"Title"_qs], u"12,345"_qs);
    EXPECT_EQ(properties[u"XAyatanaLabel"_qs], u"12,345"_qs);
    EXPECT_EQ(properties[u"Id"_qs], u"app.fernhollow.Fernhollow"_qs);
    EXPECT_EQ(properties[u"Category"_qs], u"ApplicationStatus"_qs);
    EXPECT_EQ(properties[u"Status"_qs], u"Active"_qs);
    EXPECT_EQ(properties[u"ItemIsMenu"_qs], false);
    EXPECT_FALSE(properties.contains(u"Menu"_qs));
    EXPECT_EQ(qdbus_cast<NotifierToolTip>(properties[u"ToolTip"_qs]).title, u"12,345"_qs);

    std::vector<int> widths;
    for (const auto& image : qdbus_cast<NotifierImages>(properties[u"IconPixmap"_qs])) {
        widths.push_back(image.width);
        EXPECT_EQ(image.height, image.width);
        ASSERT_EQ(image.pixels.size(), 4 * image.width * image.height);
        // Network byte order: the first byte of the opaque pixel in the middle of the edge is its alpha.
        EXPECT_EQ(image.pixels[2 * image.width], '\xff');
        EXPECT_EQ(image.pixels[0], '\0') << "the plate's corner is transparent";
    }
    EXPECT_THAT(widths, ElementsAre(22, 24, 32, 48, 64));
}

TEST(StatusItemIcons, OfferTheWholeTextLargestWhereBarsKeepWidePictures) {
    StatusNotifier notifier(QDBusConnection(QStringLiteral("no such connection")),
                            StatusNotifier::Icons::WideIcons);
    notifier.setTitle(u"12,345"_qs);
    const auto wide = notifier.images().last();
    EXPECT_GT(wide.width, 2 * wide.height);
    notifier.setTitle(u"999"_qs);
    EXPECT_EQ(notifier.images().size(), 5) << "the squares hold all of it";
}

TEST_F(StatusItemInABar, HandsOnEveryClick) {
    int clicks = 0;
    QObject::connect(&item, &StatusItem::clicked, &item, [&] { ++clicks; });
    for (const auto& method : {u"Activate"_qs, u"SecondaryActivate"_qs, u"ContextMenu"_qs}) {
        bar.call(method, {10, 20});
    }
    bar.call(u"Scroll"_qs, {120, u"vertical"_qs});
    EXPECT_TRUE(waitUntil([&] { return clicks == 3; }));
}

TEST_F(StatusItemInABar, ShowsAChangeAtOnce) {
    QElapsedTimer timer;
    timer.start();
    item.setTitle(u"12,346"_qs);
    ASSERT_TRUE(waitUntil([&] { return bar.label == u"12,346"; }));
    EXPECT_LT(timer.elapsed(), 40);
    EXPECT_EQ(bar.properties()[u"Title"_qs], u"12,346"_qs);
    EXPECT_EQ(bar.signalCounts["NewTitle"], 1);
    EXPECT_EQ(bar.signalCounts["NewToolTip"], 1);
    EXPECT_EQ(bar.signalCounts["NewIcon"], 0) << "the icon says 12k as before";
}

TEST_F(StatusItemInABar, SaysWhenTheIconChanges) {
    item.setTitle(u"13,000"_qs);
    EXPECT_TRUE(waitUntil([&] { return bar.signalCounts["NewIcon"] == 1; }));
    item.setTitle(u"13,000"_qs);
    pause(150);
    EXPECT_EQ(bar.signalCounts["NewTitle"], 1);
}

TEST_F(StatusItemInABar, TellsFewOfManyChangesAndAlwaysTheLast) {
    for (int count = 1; count <= 1000; ++count) {
        item.setTitle(QString::number(count));
        if (count % 100 == 0) {
            pause(10);
        }
    }
    EXPECT_TRUE(waitUntil([&] { return bar.label == u"1000"; }));
    pause(150);
    EXPECT_EQ(bar.label, u"1000"_qs);
    EXPECT_THAT(bar.signalCounts["NewTitle"], AllOf(Ge(2), Le(8)));
}

TEST(StatusItemWithoutAHost, SendsNothing) {
    FakeNotifierHost bar(false);
    StatusItem item;
    ASSERT_TRUE(waitUntil([&] { return bar.items.size() == 1; }));
    pause(100);
    item.setTitle(u"1"_qs);
    item.setTitle(u"2,000"_qs);
    pause(150);
    EXPECT_THAT(bar.signalCounts, IsEmpty());
    EXPECT_EQ(bar.properties()[u"Title"_qs], u"2,000"_qs) << "a host that comes reads the latest";
}

} // namespace fernhollow::tests
