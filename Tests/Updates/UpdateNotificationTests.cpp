#include "FakeService.h"
#include "Support/Testing.h"
#include "Updates/UpdateNotification.h"

#include <QDBusArgument>
#include <QDBusPendingCall>

namespace fernhollow::tests {
namespace {

const QString service = QStringLiteral("org.freedesktop.Notifications");

/// On a desktop whose notifications are numbered from 41.
class UpdateNotificationTest : public testing::Test {
protected:
    UpdateNotificationTest() {
        server_.interfaces[service] = [this](const QDBusMessage& call) {
            if (call.member() == u"CloseNotification") {
                closed_.append(call.arguments()[0].toUInt());
                return call.createReply();
            }
            shown_ = call.arguments();
            replaced_.append(shown_[1].toUInt());
            return call.createReply(replaced_.last() != 0 ? replaced_.last() : ++last_);
        };
    }

    /// Until the notification has its number.
    void show(const std::string& version) {
        const auto known = replaced_.size();
        notification_.show(version);
        ASSERT_TRUE(waitUntil([&] { return replaced_.size() > known; }));
        settle();
    }

    /// Until the program has heard all that the server said: the bus keeps the order of what one side sends.
    static void settle() {
        QDBusConnection bus = QDBusConnection::sessionBus();
        const QDBusPendingCall ping = bus.asyncCall(QDBusMessage::createMethodCall(
            service, QStringLiteral("/"), QStringLiteral("org.freedesktop.DBus.Peer"),
            QStringLiteral("Ping")));
        waitUntil([&] { return ping.isFinished(); });
        QCoreApplication::processEvents();
    }

    void act(uint id, const char* action = "default") {
        server_.emitSignal(QStringLiteral("ActionInvoked"), {id, QString::fromLatin1(action)});
    }

    FakeService server_{service, QStringLiteral("/org/freedesktop/Notifications")};
    QVariantList shown_; ///< what the last notification was made of
    QList<uint> replaced_;
    QList<uint> closed_;
    uint last_ = 40;
    std::vector<QByteArray> activated_; ///< the token of each
    UpdateNotification notification_{QDBusConnection::sessionBus(),
                                     [this](const QByteArray& token) { activated_.push_back(token); }};
};

TEST_F(UpdateNotificationTest, TellsQuietlyAndHearsItsOwnActionAlone) {
    show("0.3.0 <b>");
    EXPECT_EQ(shown_[3], QStringLiteral("Fernhollow 0.3.0 <b> is available"));
    EXPECT_TRUE(shown_[5].toStringList().contains(QStringLiteral("default")));
    EXPECT_EQ(qdbus_cast<QVariantMap>(shown_[6]).value(QStringLiteral("urgency")).toInt(), 0);

    act(7); // another program's
    act(41, "snooze");
    for (const auto& [id, token] : {std::pair(7U, "another"), std::pair(41U, "leave")}) {
        server_.emitSignal(QStringLiteral("ActivationToken"), {id, QString::fromLatin1(token)});
    }
    act(41);
    act(41);
    settle();
    EXPECT_THAT(activated_, ElementsAre("leave", ""));
}

TEST_F(UpdateNotificationTest, ReplacesWhatIsStillShownAndTakesItBackOnce) {
    show("0.3.0");
    show("0.4.0");
    notification_.close();
    notification_.close();
    act(41); // too late
    show("0.5.0");
    EXPECT_EQ(closed_, QList<uint>{41});
    server_.emitSignal(QStringLiteral("NotificationClosed"), {42U, 2U});
    settle();
    act(42);
    show("0.6.0");
    EXPECT_EQ(replaced_, (QList<uint>{0, 41, 0, 0}));
    EXPECT_TRUE(activated_.empty());
}

} // namespace
} // namespace fernhollow::tests
