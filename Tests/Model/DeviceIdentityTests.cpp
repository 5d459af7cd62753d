// Whose counts are whose: machines, settings and databases that were copied, lost or shared.

#include "Model/DeviceIdentity.h"
#include "Model/KeychainStore.h"
#include "ModelFixture.h"
#include "Platform/UserDefaults.h"

#include <cstdint>
#include <fstream>

namespace fernhollow::tests {
namespace {

namespace fs = std::filesystem;

constexpr const char* uuid = "[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}";

class Identity : public ModelFixture {
protected:
    Identity() { signIn("ana@example.com"); }

    /// One run on a machine, in which `presses` are typed; returns the identity under which they would be
    /// sent.
    std::string run(const std::string& machine, std::int64_t presses) {
        machine_ = machine;
        std::string deviceId;
        start([&](std::shared_ptr<DailyCountsStore>, AccountManager&, std::string id, const auto&) {
            deviceId = std::move(id);
            return std::shared_ptr<CloudSyncCoordinator>();
        });
        press(presses);
        flush();
        shutDown();
        return deviceId;
    }

    static std::optional<std::string> inSettings() { return KeychainStore::readString("deviceId"); }
    static void setInSettings(const std::string& id) {
        UserDefaults::setString(KeychainStore::key("deviceId"), id);
    }
    void loseSettings() { fs::remove_all(home_.path() / "config"); }
    fs::path record() { return home_.dataFolder() / "identity.json"; }
    fs::path database() { return DailyCountsStore::urlForAccount("ana@example.com"); }
};

TEST_F(Identity, OutlivesTheLossOfTheSettingsOrOfTheCounts) {
    const auto id = run("a", 10);
    EXPECT_THAT(id, MatchesRegex(uuid));
    loseSettings();
    EXPECT_EQ(run("a", 0), id);
    EXPECT_EQ(inSettings(), id);
    fs::remove_all(home_.dataFolder());
    EXPECT_EQ(run("a", 0), id);
    EXPECT_THAT(contents(record()), HasSubstr(id));
    EXPECT_EQ(modeOf(record()), 0600u);
}

TEST_F(Identity, RefusesWhatIsNoUuid) {
    const auto id = run("a", 10);
    for (const std::string bad :
         {"", "{7D1C3C42-6F0B-4B57-9E37-0D3E5B2B7B}", "00000000-0000-0000-0000-000000000000",
          "7D1C3C42-6F0B-4B57-9E37-0D3E5B2B7BXX"}) {
        setInSettings(bad);
        EXPECT_EQ(run("a", 0), id) << bad;
        setInSettings(id);
        std::ofstream(record()) << R"({"owner":")" << bad << R"(","machines":{}})";
        EXPECT_EQ(run("a", 0), id) << bad;
    }
    EXPECT_EQ(storedCount(today), 10);
}

TEST_F(Identity, OfACopiedHomeIsLeftToItsMachineWithAllItCounted) {
    const auto first = run("a", 10);
    const auto second = run("b", 4); // the whole home came along
    EXPECT_NE(second, first);
    EXPECT_THAT(second, MatchesRegex(uuid));
    EXPECT_EQ(storedCount(today), 4) << "the others are the first machine's to send";
    EXPECT_TRUE(fs::exists(database().native() + ".machine-" + first));
    EXPECT_EQ(run("b", 1), second);
    EXPECT_EQ(storedCount(today), 5);

    EXPECT_EQ(run("a", 2), first); // a home that moves between two machines
    EXPECT_EQ(storedCount(today), 12);
    EXPECT_EQ(run("b", 3), second);
    EXPECT_EQ(storedCount(today), 8);
    EXPECT_THAT(contents(record()), Not(HasSubstr(contents("/etc/machine-id").substr(0, 32))));
}

TEST_F(Identity, OfSyncedSettingsIsLeftToTheirMachine) {
    const auto first = run("a", 10);
    fs::remove_all(home_.dataFolder()); // the counts stayed where they are
    const auto second = run("b", 4);
    EXPECT_NE(second, first);
    EXPECT_EQ(storedCount(today), 4);
    setInSettings(first); // synced once more
    EXPECT_EQ(run("b", 1), second);
    EXPECT_EQ(storedCount(today), 5);
}

TEST_F(Identity, OfTheTimeBeforeMachinesWereToldApartIsKept) {
    setInSettings("7D1C3C42-6F0B-4B57-9E37-0D3E5B2B7B11");
    {
        DailyCountsStore store(database());
        await(store.increment(today, 40, 1));
    }
    EXPECT_EQ(run("a", 2), "7D1C3C42-6F0B-4B57-9E37-0D3E5B2B7B11");
    EXPECT_EQ(storedCount(today), 42);
}

TEST_F(Identity, IsKeptWhereTheMachineCannotBeTold) {
    const auto id = run("a", 10);
    EXPECT_EQ(run("", 1), id);
    EXPECT_EQ(run("a", 1), id);
    EXPECT_EQ(storedCount(today), 12);
}

TEST_F(Identity, ThatAnotherMachineUsesIsGivenUpWithWhatWasSentUnderIt) {
    std::vector<std::string> ids;
    start([&](std::shared_ptr<DailyCountsStore>, AccountManager&, std::string id, const auto&) {
        ids.push_back(std::move(id));
        return std::shared_ptr<CloudSyncCoordinator>();
    });
    press(10);
    flush();
    press(3); // nobody has sent them
    model_->takeNewIdentity(ids.front());
    model_->takeNewIdentity(ids.front()); // reported twice
    ASSERT_EQ(ids.size(), 2u);
    EXPECT_THAT(ids.back(), MatchesRegex(uuid));
    press(2);
    flush();
    EXPECT_EQ(storedCount(today), 5);
    EXPECT_EQ(model_->todayCountAggregated.get(), 15) << "nothing that is shown goes away";
    EXPECT_EQ(inSettings(), ids.back());
    shutDown();
    EXPECT_EQ(run(machine_, 0), ids.back());
    EXPECT_EQ(storedCount(today), 5);
}

// The names of their files begin alike: 24 bytes of the address are told apart.
TEST_F(Identity, OfTwoAccountsIsNotMistakenWhenTheirAddressesBeginAlike) {
    const std::string first = "firstname.lastname.department1@example.com";
    const std::string second = "firstname.lastname.department2@example.com";
    ASSERT_EQ(DailyCountsStore::urlForAccount(first), DailyCountsStore::urlForAccount(second));
    start();
    for (int round = 1; round <= 2; ++round) {
        for (const auto& [email, presses] : {std::pair(first, 10), std::pair(second, 2)}) {
            signIn(email);
            refresh();
            press(presses);
            flush();
            EXPECT_EQ(model_->todayCount.get(), round * presses) << email;
        }
    }
    EXPECT_EQ(storedCount(today, first), 20);
    EXPECT_LT(DailyCountsStore::longUrlForAccount(std::string(300, 'x')).filename().native().size(), 200u);
}

} // namespace
} // namespace fernhollow::tests
