#include "Model/AccountManager.h"
#include "Model/KeychainStore.h"
#include "Platform/UserDefaults.h"
#include "Support/Testing.h"

#include <nlohmann/json.hpp>

#include <fstream>

namespace fernhollow::tests {
namespace {

namespace fs = std::filesystem;

class Account : public testing::Test {
protected:
    std::unique_ptr<AccountManager> start(std::optional<SupabaseConfig> config = SupabaseConfig{"http://x",
                                                                                                "key"}) {
        auto account = std::make_unique<AccountManager>(clock_, std::move(config));
        account->onAccountChange = [this](const auto& email) { changes_.push_back(email.value_or("none")); };
        return account;
    }

    TemporaryHome home_;
    FakeClock clock_{at("UTC", {.year = 2026, .month = 3, .day = 5, .hour = 14}) + 123ms};
    std::vector<std::string> changes_;
};

TEST_F(Account, SignsInWithTheNormalisedAddress) {
    const auto account = start();
    account->onAccountChange = [&](const std::optional<std::string>& email) {
        EXPECT_EQ(account->email(), email); // the state is the new one when the change is announced
        changes_.push_back(email.value());
    };
    await(account->verifyEmail("  Ana+Work@Example.COM\u00a0\n"));

    EXPECT_EQ(account->email(), "ana+work@example.com");
    EXPECT_THAT(changes_, ElementsAre("ana+work@example.com"));
    EXPECT_FALSE(account->isVerifying.get());
    const auto stored = nlohmann::json::parse(KeychainStore::readData("accountSession").value());
    EXPECT_EQ(stored["email"], "ana+work@example.com");
    EXPECT_DOUBLE_EQ(stored["verifiedAt"].get<double>(), 794'412'000.123); // seconds since 2001
}

TEST_F(Account, RefusesWhatIsNoAddressAndNeedsABackend) {
    const auto refusal = [](AccountManager& account, const char* text) -> std::string {
        try {
            await(account.verifyEmail(text));
        } catch (const AccountManager::AccountError& error) {
            return error.what();
        }
        return "none";
    };
    const auto account = start();
    int notifications = 0;
    const auto observation = account->observe([&] { ++notifications; });
    for (const char* text : {"", " \n ", "ana.example.com"}) {
        EXPECT_EQ(refusal(*account, text), "Invalid email address") << text;
    }
    EXPECT_EQ(notifications, 0);
    EXPECT_EQ(refusal(*account, "@"), "none");
    EXPECT_EQ(account->email(), "@");

    const auto withoutBackend = start(std::nullopt);
    EXPECT_EQ(refusal(*withoutBackend, "ana@example.com"), "Configuration missing");
    EXPECT_EQ(withoutBackend->email(), "@") << "the session of the one before";
}

TEST_F(Account, RestoresTheSessionAndTheOnboardingFlagAtTheNextStart) {
    AccountManager::Status before;
    {
        const auto account = start();
        await(account->verifyEmail("ana@example.com"));
        EXPECT_FALSE(account->hasSeenOnboarding.get());
        account->markOnboardingSeen();
        before = account->status.get();
    }
    const auto account = start();
    EXPECT_EQ(account->status.get(), before);
    EXPECT_TRUE(account->hasSeenOnboarding.get());
    EXPECT_THAT(changes_, ElementsAre("ana@example.com")); // none at construction
}

TEST_F(Account, TakesAnUnreadableSessionForNone) {
    for (const char* data :
         {"", "{", "{}", R"({"email":1,"verifiedAt":2})", R"({"email":"a@b"})",
          R"({"email":"a@b","verifiedAt":80000000010})", R"({"email":"a@b","verifiedAt":-1e300})"}) {
        UserDefaults::setData(KeychainStore::key("accountSession"), data);
        EXPECT_EQ(start()->email(), std::nullopt) << data;
    }
    UserDefaults::setString(KeychainStore::key("accountSession"), R"({"email":"a@b","verifiedAt":2})");
    EXPECT_EQ(start()->email(), std::nullopt) << "a text is not data";
}

TEST_F(Account, SignsOutAndRemovesTheOldDatabase) {
    const auto account = start();
    await(account->verifyEmail("ana@example.com"));
    account->connectedDevices.set({{"id", "name", "2026-03-05T14:07:09Z"}});
    fs::create_directories(home_.dataFolder());
    for (const char* name : {"keypress.sqlite", "keypress_abc.sqlite"}) {
        std::ofstream(home_.dataFolder() / name) << "x";
    }
    account->signOut();

    EXPECT_EQ(account->email(), std::nullopt);
    EXPECT_THAT(account->connectedDevices.get(), testing::IsEmpty());
    EXPECT_THAT(changes_, ElementsAre("ana@example.com", "none"));
    EXPECT_FALSE(fs::exists(home_.dataFolder() / "keypress.sqlite"));
    EXPECT_TRUE(fs::exists(home_.dataFolder() / "keypress_abc.sqlite"));
    EXPECT_EQ(start()->email(), std::nullopt);
}

} // namespace
} // namespace fernhollow::tests
