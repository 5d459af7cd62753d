#include "KeypressCore/DailyCountsStore.h"
#include "Support/Testing.h"

#include <fstream>
#include <sys/stat.h>

namespace fernhollow::tests {
namespace {

namespace fs = std::filesystem;

void write(const fs::path& file, const std::string& text) {
    std::ofstream(file, std::ios::binary) << text;
}

TEST(AccountFile, IsNamedAfterTheAddress) {
    const TemporaryHome home;
    const auto name = [](std::string_view email) {
        return DailyCountsStore::urlForAccount(email).filename();
    };
    EXPECT_EQ(name("ab?~"), "keypress_YWI_fg.sqlite");
    EXPECT_EQ(name(">>>?"), "keypress_Pj4-Pw.sqlite");
    EXPECT_EQ(name(std::string(40, 'a')), "keypress_YWFhYWFhYWFhYWFhYWFhYWFhYWFhYWFh.sqlite");
    EXPECT_EQ(name("Ana@Example.com"), name("ana@example.com"));
    EXPECT_EQ(name("ÄÖ@x"), name("äö@x"));
}

TEST(DatabaseFolder, IsMadeForItsUserAlone) {
    const TemporaryHome home;
    EXPECT_EQ(DailyCountsStore::databaseDirectory(), home.dataFolder());
    EXPECT_FALSE(fs::exists(home.dataFolder()));
    EXPECT_EQ(DailyCountsStore::defaultURL(), home.dataFolder() / "keypress.sqlite");
    struct stat folder{};
    ASSERT_EQ(::stat(home.dataFolder().c_str(), &folder), 0);
    EXPECT_EQ(folder.st_mode & 0777, 0700u);
    EXPECT_FALSE(DailyCountsStore::globalDatabaseExists());
}

TEST(Migration, MovesTheOldDatabaseWithItsCompanions) {
    const TemporaryHome home;
    const fs::path old = DailyCountsStore::defaultURL();
    write(old, "database");
    write(old.native() + "-wal", "log");
    EXPECT_TRUE(DailyCountsStore::globalDatabaseExists());

    EXPECT_TRUE(DailyCountsStore::migrateGlobalDataToAccount("ana@example.com"));
    const fs::path account = DailyCountsStore::urlForAccount("ana@example.com");
    EXPECT_EQ(contents(account), "database");
    EXPECT_EQ(contents(account.native() + "-wal"), "log");
    EXPECT_FALSE(fs::exists(old));
    EXPECT_FALSE(fs::exists(old.native() + "-wal"));
    EXPECT_FALSE(DailyCountsStore::migrateGlobalDataToAccount("ana@example.com"));
}

TEST(Migration, LeavesAnAccountThatHasADatabaseAlone) {
    const TemporaryHome home;
    write(DailyCountsStore::defaultURL(), "old");
    write(DailyCountsStore::urlForAccount("ana@example.com"), "new");
    EXPECT_FALSE(DailyCountsStore::migrateGlobalDataToAccount("ana@example.com"));
    EXPECT_EQ(contents(DailyCountsStore::defaultURL()), "old");
    EXPECT_EQ(contents(DailyCountsStore::urlForAccount("ana@example.com")), "new");
}

TEST(Migration, LeavesNothingBehindWhenTheCopyFails) {
    const TemporaryHome home;
    fs::create_directory(DailyCountsStore::defaultURL()); // exists, but is no file that could be copied
    EXPECT_THROW(DailyCountsStore::migrateGlobalDataToAccount("ana@example.com"), fs::filesystem_error);
    EXPECT_FALSE(fs::exists(DailyCountsStore::urlForAccount("ana@example.com")));
    EXPECT_TRUE(fs::exists(DailyCountsStore::defaultURL()));
}

} // namespace
} // namespace fernhollow::tests
