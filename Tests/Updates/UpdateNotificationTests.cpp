#include "FakeNotificationServer.h"
#include "Support/Testing.h"
#include "Updates/UpdateNotification.h"

#include <QDBusMessage>
#include <QDBusPendingCall>

namespace fernhollow::tests {
namespace {

class UpdateNotificationTest : public testing::Test {
protected:
    /// Until the notification has its number.
    void show(const std::string& version) {
        const auto known = server_.summaries.size();
        notification_.show(version);
        ASSERT_TRUE(waitUntil([&] { return server_.summaries.size() > known; }));
        settle();
    }

    /// Until the program has heard all that the server said: the bus keeps the order of what one side sends.
    static void settle() {
        QDBusConnection bus = QDBusConnection::sessionBus();
        const QDBusPendingCall ping = bus.asyncCall(QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("/"),
            QStringLiteral("org.freedesktop.DBus.Peer"), QStringLiteral("Ping")));
        waitUntil([&] { return ping.isFinished(); });
        QCoreApplication::processEvents();
    }

    FakeNotificationServer server_;
    std::vector<QByteArray> activated_; ///< the token of each
    UpdateNotification notification_{QDBusConnection::sessionBus(),
                                     [this](const QByteArray& token) { activated_.push_back(token); }};
};

TEST_F(UpdateNotificationTest, TellsQuietlyAndHearsItsOwnActionAlone) {
    show("0.3.0 <b>");
    EXPECT_EQ(server_.summaries, QStringList{QStringLiteral("Fernhollow 0.3.0 <b> is available")});
    EXPECT_EQ(server_.hints.value(QStringLiteral("urgency")).toInt(), 0);
    ASSERT_TRUE(server_.actions.contains(QStringLiteral("default")));

    Q_EMIT server_.ActionInvoked(7, QStringLiteral("default")); // another program's
    Q_EMIT server_.ActionInvoked(41, QStringLiteral("snooze"));
    Q_EMIT server_.ActivationToken(7, QStringLiteral("another"));
    Q_EMIT server_.ActivationToken(41, QStringLiteral("leave"));
    Q_EMIT server_.ActionInvoked(41, QStringLiteral("default"));
    Q_EMIT server_.ActionInvoked(41, QStringLiteral("default"));
    EXPECT_TRUE(waitUntil([this] { return activated_.size() > 1; }));
    EXPECT_THAT(activated_, testing::ElementsAre("leave", ""));
}

TEST_F(UpdateNotificationTest, ReplacesWhatIsStillShownAndTakesItBackOnce) {
    show("0.3.0");
    show("0.4.0");
    EXPECT_EQ(server_.replaced, (QList<uint>{0, 41}));
    notification_.close();
    notification_.close();
    Q_EMIT server_.ActionInvoked(41, QStringLiteral("default")); // too late
    show("0.5.0");
    EXPECT_EQ(server_.closed, QList<uint>{41});
    Q_EMIT server_.NotificationClosed(42, 2);
    settle();
    Q_EMIT server_.ActionInvoked(42, QStringLiteral("default"));
    show("0.6.0");
    EXPECT_EQ(server_.replaced, (QList<uint>{0, 41, 0, 0}));
    EXPECT_TRUE(activated_.empty());
}

} // namespace
} // namespace fernhollow::tests
