#include "Platform/StatusItem/StatusItem.h"

#include "Platform/StatusItem/FakeNotifierHost.h"
#include "Platform/StatusItem/MenuTypes.h"
#include "Platform/StatusItem/NotifierTypes.h"
#include "Platform/StatusItem/StatusNotifier.h"
#include "Support/EventLoop.h"

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
    const QDeadlineTimer end(milliseconds);
    waitUntil([&] { return end.hasExpired(); });
}

} // namespace

TEST(StatusItemPresence, AppearsInABarThatComesLaterAndInItsSuccessor) {
    const StatusItem item(StatusIcons::square);
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
    StatusItem item(StatusIcons::square);
    ASSERT_TRUE(waitUntil([&] { return bar.items.size() == 1; }));
    item.setTitle(QStringLiteral("1"));
    pause(100);
    item.setTitle(QStringLiteral("2,000"));
    pause(100);
    EXPECT_FALSE(item.isShown());
    EXPECT_THAT(bar.signalCounts, IsEmpty()) << "no host is listening";
    bar.setHost(true);
    EXPECT_TRUE(waitUntilShown(item));
    EXPECT_EQ(bar.properties()[QStringLiteral("Title")], QStringLiteral("2,000"));
    bar.setHost(false);
    EXPECT_TRUE(waitUntilShown(item, false));
}

TEST(StatusItemPresence, DoesWithoutABus) {
    StatusNotifier notifier(QDBusConnection(QStringLiteral("no such connection")), StatusIcons::wide);
    notifier.setTitle(QStringLiteral("12,345"));
    EXPECT_EQ(notifier.watcher(), StatusNotifier::Watcher::Absent);
    // Bars that keep wide pictures take the largest, which shows the whole text.
    const auto widest = notifier.images().last();
    EXPECT_GT(widest.width, 2 * widest.height);
    notifier.setTitle(QStringLiteral("999"));
    EXPECT_EQ(notifier.images().size(), 5) << "the squares hold all of it";
}

class StatusItemInABar : public testing::Test {
protected:
    void SetUp() override {
        item.setTitle(QStringLiteral("12,345"));
        ASSERT_TRUE(waitUntilShown(item));
        pause(60); // what follows is the first change for a while
    }

    FakeNotifierHost bar;
    StatusItem item{StatusIcons::square};
};

TEST_F(StatusItemInABar, TellsAHostWhatItAsks) {
    const auto properties = bar.properties();
    for (const auto& [name, value] :
         std::map<QString, QVariant>{{QStringLiteral("Title"), QStringLiteral("12,345")},
                                     {QStringLiteral("XAyatanaLabel"), QStringLiteral("12,345")},
                                     {QStringLiteral("Id"), QStringLiteral("app.fernhollow.Fernhollow")},
                                     {QStringLiteral("Category"), QStringLiteral("ApplicationStatus")},
                                     {QStringLiteral("Status"), QStringLiteral("Active")},
                                     {QStringLiteral("ItemIsMenu"), false}}) {
        EXPECT_EQ(properties[name], value) << name.toStdString();
    }
    EXPECT_EQ(qdbus_cast<NotifierToolTip>(properties[QStringLiteral("ToolTip")]).title,
              QStringLiteral("Fernhollow: 12,345 key presses today"));

    std::vector<int> widths;
    for (const auto& image : qdbus_cast<NotifierImages>(properties[QStringLiteral("IconPixmap")])) {
        widths.push_back(image.width);
        EXPECT_EQ(image.height, image.width);
        ASSERT_EQ(image.pixels.size(), 4 * image.width * image.height);
        // Network byte order: the first byte of the opaque pixel in the middle of the edge is its alpha.
        EXPECT_EQ(image.pixels[qsizetype{2} * image.width], '\xff');
        EXPECT_EQ(image.pixels[0], '\0') << "the plate's corner is transparent";
    }
    EXPECT_THAT(widths, ElementsAre(22, 24, 32, 48, 64));
}

TEST_F(StatusItemInABar, HandsOnEveryClick) {
    std::vector<QByteArray> clicks; // the token of each
    QObject::connect(&item, &StatusItem::clicked, &item,
                     [&](const QByteArray& token) { clicks.push_back(token); });
    for (const auto& method :
         {QStringLiteral("Activate"), QStringLiteral("SecondaryActivate"), QStringLiteral("ContextMenu")}) {
        bar.call(bar.itemInterface, method, {10, 20});
        EXPECT_TRUE(waitUntil([&] { return clicks.size() == 1; })) << method.toStdString();
        EXPECT_EQ(std::exchange(clicks, {}).front(), "");
    }
    bar.call(bar.itemInterface, QStringLiteral("ProvideXdgActivationToken"), {QStringLiteral("leave")});
    for (int click = 0; click < 2; ++click) {
        bar.call(bar.itemInterface, QStringLiteral("Activate"), {10, 20});
    }
    EXPECT_TRUE(waitUntil([&] { return clicks.size() == 2; }));
    EXPECT_THAT(clicks, ElementsAre("leave", "")) << "a token is for one click";
}

TEST_F(StatusItemInABar, OffersItsMenu) {
    QStringList done;
    const auto entry = [&done](const QString& label) {
        return StatusMenuEntry{label, [&done, label] { done.append(label); }};
    };
    item.setMenu({entry(QStringLiteral("Show")), entry(QStringLiteral("under_score"))});
    const auto path = qvariant_cast<QDBusObjectPath>(bar.properties()[QStringLiteral("Menu")]).path();
    const QDBusPendingReply<uint, MenuLayout> reply =
        bar.callMenu(path, QStringLiteral("GetLayout"), {0, -1, QStringList{}});
    ASSERT_TRUE(waitUntil([&] { return reply.isFinished(); }));
    ASSERT_FALSE(reply.isError()) << reply.error().message().toStdString();
    QStringList labels;
    for (const QDBusVariant& child : reply.argumentAt<1>().children) {
        const auto layout = qdbus_cast<MenuLayout>(child.variant());
        EXPECT_EQ(layout.id, labels.size() + 1);
        labels.append(layout.properties[QStringLiteral("label")].toString());
    }
    EXPECT_EQ(labels, QStringList({QStringLiteral("Show"), QStringLiteral("under__score")}));

    const auto click = [&](int id, const char* type) {
        bar.callMenu(path, QStringLiteral("Event"),
                     {id, QString::fromLatin1(type), QVariant::fromValue(QDBusVariant(0)), 0U});
    };
    click(1, "hovered");
    click(7, "clicked");
    click(2, "clicked");
    EXPECT_TRUE(waitUntil([&] { return !done.isEmpty(); }));
    EXPECT_EQ(done, QStringList(QStringLiteral("under_score")));

    item.setMenu({entry(QStringLiteral("Hide")), entry(QStringLiteral("under_score"))});
    EXPECT_TRUE(waitUntil([&] { return bar.signalCounts[QStringLiteral("ItemsPropertiesUpdated")] == 1; }));
    item.setMenu({entry(QStringLiteral("Quit"))});
    EXPECT_TRUE(waitUntil([&] { return bar.signalCounts[QStringLiteral("LayoutUpdated")] == 1; }));
    EXPECT_EQ(bar.signalCounts[QStringLiteral("ItemsPropertiesUpdated")], 1);
}

TEST_F(StatusItemInABar, SaysWhenTheBarDropsIt) {
    int drops = 0;
    QObject::connect(&item, &StatusItem::dropped, &item, [&] { ++drops; });
    Q_EMIT bar.StatusNotifierItemUnregistered(bar.items.last() + QStringLiteral("9/StatusNotifierItem"));
    Q_EMIT bar.StatusNotifierItemUnregistered(bar.items.last() + QStringLiteral("/StatusNotifierItem"));
    EXPECT_TRUE(waitUntilShown(item, false));
    EXPECT_EQ(drops, 1) << "another program's item is not ours";
}

TEST_F(StatusItemInABar, ShowsAChangeAtOnceAndANewIconWhenItDiffers) {
    item.setTitle(QStringLiteral("12,346"));
    ASSERT_TRUE(waitUntil([&] { return bar.signalCounts.size() == 3; }));
    EXPECT_EQ(bar.label, u"12,346");
    EXPECT_EQ(bar.signalCounts[QStringLiteral("NewIcon")], 0) << "the icon says 12k as before";
    item.setTitle(QStringLiteral("13,000"));
    EXPECT_TRUE(waitUntil([&] { return bar.signalCounts[QStringLiteral("NewIcon")] == 1; }));
    item.setTitle(QStringLiteral("13,000"));
    pause(150);
    EXPECT_EQ(bar.signalCounts[QStringLiteral("NewTitle")], 2);
    EXPECT_EQ(bar.signalCounts[QStringLiteral("NewToolTip")], 2);
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
    EXPECT_EQ(bar.label, QStringLiteral("1000"));
    EXPECT_THAT(bar.signalCounts[QStringLiteral("NewTitle")], AllOf(Ge(2), Le(8)));
}

} // namespace fernhollow::tests
