#include "Keytap/Client.h"
#include "Keytap/Peers.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <unistd.h>

namespace fernhollow::keytap {
namespace {

using namespace std::chrono_literals;

/// Peers on a real socket; the keyboard, the clock and logind are the test's.
class PeersTest : public testing::Test {
protected:
    static Descriptor listening(const std::string& path) {
        Descriptor listener(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
        sockaddr_un address{AF_UNIX, {}};
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        EXPECT_EQ(bind(listener.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        listen(listener.number(), 64);
        return listener;
    }

    void SetUp() override { sit(My::inFront); }
    ~PeersTest() override { std::filesystem::remove(path); }

    enum class My { inFront, locked, behind };
    void sit(My session) {
        const bool isBehind = session == My::behind;
        peers.setSittings(
            {{"seat0", "c1", me, !isBehind, session == My::locked}, {"seat0", "c2", me + 1, isBehind}});
    }

    void run() {
        for (int i = 0; i < 40; ++i) { // at most as many as may be ready in one slot
            poller.wait(Time::zero());
        }
    }

    Client connected() {
        Client client(path.c_str());
        run();
        peers.endSlot();
        return client;
    }

    void press(int count) {
        for (int i = 0; i < count; ++i) {
            peers.pressed("seat0", now);
            peers.released("seat0", now);
        }
    }

    template<typename Value>
    Client::Answers ask(Client& client, Value value) {
        EXPECT_TRUE(client.send(value));
        run();
        return client.take();
    }

    std::uint64_t sumAfterSlot(Client& client) {
        peers.endSlot();
        return client.take().sum;
    }

    const uid_t me = geteuid();
    const std::string path = testing::TempDir() + "keytap-" + std::to_string(getpid());
    Poller poller;
    Time now = 10s;
    std::uint64_t unread = 0; // presses that the kernel holds
    std::set<std::string> seats;
    Peers peers{listening(path),
                {.poller = poller,
                 .now = [this] { return now; },
                 .readDevices = [this] { press(static_cast<int>(std::exchange(unread, 0))); },
                 .seatsChanged = [this](const auto& wanted) { seats = wanted; }}};
};

TEST_F(PeersTest, CountsLeaveTogetherAtTheEndsOfFixedSlots) {
    auto client = connected();
    EXPECT_FALSE(peers.slotEnd());
    now = 12'345ms;
    press(3);
    EXPECT_EQ(peers.slotEnd(), 12'400ms);
    EXPECT_EQ(client.take().packets, 0);
    peers.endSlot();
    const auto answers = client.take();
    EXPECT_EQ(answers.sum, 3);
    EXPECT_EQ(answers.packets, 1);
    EXPECT_FALSE(peers.slotEnd());
}

TEST_F(PeersTest, OneQuestionInASlotIsAnsweredAtOnce) {
    auto client = connected();
    press(2);
    unread = 5;
    EXPECT_EQ(ask(client, deliverNow).sum, 7);
    press(1);
    EXPECT_EQ(ask(client, deliverNow).packets, 0);
    EXPECT_EQ(sumAfterSlot(client), 1);
    EXPECT_EQ(ask(client, deliverNow).packets, 1); // a zero, so that the client knows there was nothing
}

TEST_F(PeersTest, NothingIsDeliveredBehindAnotherSessionOrALock) {
    auto client = connected();
    for (const auto away : {My::behind, My::locked}) {
        press(4);
        sit(away);
        EXPECT_TRUE(seats.empty());
        press(100);
        EXPECT_EQ(ask(client, deliverNow).packets, 0);
        EXPECT_EQ(sumAfterSlot(client), 0);
        sit(My::inFront);
        EXPECT_EQ(seats, std::set<std::string>{"seat0"});
        EXPECT_EQ(sumAfterSlot(client), 4); // from before
    }
    peers.pressed("seat1", now);
    EXPECT_EQ(sumAfterSlot(client), 0);
}

TEST_F(PeersTest, AClientThatStallsKeepsItsSumAndHarmsNoOther) {
    auto stalling = connected(), reading = connected();
    std::uint64_t read = 0;
    for (int i = 0; i < 1000; ++i) {
        press(2);
        read += sumAfterSlot(reading);
        run();
    }
    EXPECT_EQ(read, 2000);
    const auto taken = stalling.take();
    EXPECT_LT(taken.packets, 50);
    run();
    EXPECT_EQ(taken.sum + stalling.take().sum, 2000);
}

TEST_F(PeersTest, AClientThatFloodsIsHeardAFewTimesInASlot) {
    auto flooding = connected(), other = connected();
    const auto flood = [&flooding] {
        int packets = 0;
        while (flooding.send(deliverNow)) {
            ++packets;
        }
        return packets;
    };
    flood();
    for (int slot = 0; slot < 3; ++slot) {
        run();
        EXPECT_EQ(flood(), packetsPerSlot); // as many as were taken from it
        press(1);
        peers.endSlot();
        EXPECT_EQ(other.take().sum, 1);
        EXPECT_LE(flooding.take().packets, 2);
    }
}

TEST_F(PeersTest, ALieEndsTheConnection) {
    const auto isRefused = [this](auto lie) {
        auto client = connected();
        const auto answers = ask(client, lie);
        return answers.isClosed && answers.refusal == static_cast<std::uint8_t>(Refusal::notUnderstood);
    };
    EXPECT_TRUE(isRefused(std::uint8_t{0}));
    EXPECT_TRUE(isRefused(std::uint16_t{deliverNow}));
    EXPECT_TRUE(isRefused(std::array<char, 40>{}));
    EXPECT_TRUE(isRefused(RepeatSettings{60'001, 25}));
    EXPECT_TRUE(isRefused(RepeatSettings{600, 1'001}));
    EXPECT_TRUE(peers.isEmpty());
    EXPECT_TRUE(seats.empty());
}

TEST_F(PeersTest, RefusalsSayWhy) {
    const auto reason = [this] {
        Client client(path.c_str());
        client.send(RepeatSettings{}); // is on its way before the refusal is
        run();
        peers.endSlot();
        const auto answers = client.take();
        EXPECT_EQ(answers.isClosed, answers.refusal != 0);
        return answers.refusal ? explanation(Refusal{answers.refusal}) : nullptr;
    };
    peers.setSittings({{"seat0", "c2", me + 1, true}});
    EXPECT_STREQ(reason(), "The user has no session at a seat of this machine.");
    sit(My::behind);
    EXPECT_STREQ(reason(), "Another session is in front at the user's seat.");
    sit(My::inFront);
    std::vector<Client> clients;
    for (std::size_t i = 0; i < peersPerUser; ++i) {
        clients.push_back(connected());
    }
    EXPECT_STREQ(reason(), "The user has too many connections.");
    clients.pop_back();
    run();
    EXPECT_EQ(reason(), nullptr);
}

} // namespace
} // namespace fernhollow::keytap
