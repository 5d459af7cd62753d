#include "Model/KeychainStore.h"
#include "ModelFixture.h"

#include <filesystem>

namespace fernhollow::tests {
namespace {

class ChangingAccounts : public ModelFixture {
protected:
    void signInAndSettle(const std::string& email) {
        signIn(email);
        refresh();
    }
};

TEST_F(ChangingAccounts, KeepsEachAccountsCountsApart) {
    start();
    press(9); // nobody's
    flush();
    EXPECT_EQ(model_->menuBarTitle(), "9");
    EXPECT_FALSE(std::filesystem::exists(home_.dataFolder())) << "nothing is stored without an account";
    signInAndSettle("ana@example.com");
    EXPECT_EQ(model_->todayCount.get(), 0);
    press(3);
    flush();
    press(50); // discarded by the change
    signInAndSettle("ben@example.com");
    press(2, "org.b");
    flush();
    EXPECT_EQ(storedCount(today, "ana@example.com"), 3);
    EXPECT_EQ(storedCount(today, "ben@example.com"), 2);
    EXPECT_EQ(model_->appTracker().todayAppTotals.get().size(), 1u);
    EXPECT_THAT(home_.log(), HasSubstr("[AppModel] Account change: none -> ana@example.com\n"));
    EXPECT_THAT(home_.log(),
                HasSubstr("[AppModel] Switched to account-specific store for: ben@example.com\n"));

    signInAndSettle("ana@example.com");
    EXPECT_EQ(model_->todayCount.get(), 3);
    account_->signOut();
    refresh();
    EXPECT_EQ(model_->todayCount.get(), 0);
    EXPECT_THAT(model_->appTracker().todayAppTotals.get(), IsEmpty());
    EXPECT_THAT(home_.log(), HasSubstr("[AppModel] Cleared store on sign out\n"));
}

TEST_F(ChangingAccounts, IgnoresASecondSignInWithTheSameAddress) {
    signIn("ana@example.com");
    start();
    press(3);
    signInAndSettle("ANA@example.com ");
    EXPECT_EQ(model_->todayCount.get(), 3);
    EXPECT_THAT(home_.log(), HasSubstr("[AppModel] Account change skipped - same email\n"));
}

TEST_F(ChangingAccounts, TakesTheDatabaseOfTheTimeBeforeAccountsOver) {
    {
        DailyCountsStore old(DailyCountsStore::defaultURL());
        await(old.increment(today, 40, 1));
    }
    signIn("ana@example.com");
    start();
    refresh();
    EXPECT_EQ(model_->todayCount.get(), 40);
    EXPECT_FALSE(std::filesystem::exists(home_.dataFolder() / "keypress.sqlite"));
    EXPECT_THAT(home_.log(),
                HasSubstr("[AppModel] Migrated legacy global database to account: ana@example.com\n"));
}

} // namespace
} // namespace fernhollow::tests
