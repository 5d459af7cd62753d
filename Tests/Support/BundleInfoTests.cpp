#include "Support/ApplicationIdentity.h"
#include "Support/BundleInfo.h"
#include "Support/TemporaryHome.h"

#include <gmock/gmock.h>

#include <fstream>

namespace fernhollow {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

class BundleInfoFile : public testing::Test {
protected:
    BundleInfo read(const std::string& text) {
        std::ofstream(file_) << text;
        return BundleInfo::read(file_);
    }

    const tests::TemporaryHome home_;
    const std::filesystem::path file_ = home_.path() / "fernhollow.json";
};

TEST_F(BundleInfoFile, HoldsTextsAndNothingElse) {
    const BundleInfo info = read(R"({"CFBundleVersion": "0.2.0", "Count": 7, "None": null, "List": ["a"],
                                     "Name": "Müller \"&\" Söhne"})");
    EXPECT_EQ(info.string("CFBundleVersion"), "0.2.0");
    EXPECT_EQ(info.string("Name"), "Müller \"&\" Söhne");
    for (const char* key : {"Count", "None", "List", "Missing", ""}) {
        EXPECT_EQ(info.string(key), std::nullopt) << key;
    }
    EXPECT_THAT(home_.log(), IsEmpty());
}

TEST_F(BundleInfoFile, IsEmptyAndLoggedWhenItCannotBeRead) {
    EXPECT_EQ(BundleInfo::read(home_.path() / "missing.json").string("CFBundleVersion"), std::nullopt);
    EXPECT_THAT(home_.log(), HasSubstr("missing.json: No such file or directory"));
    for (const char* text :
         {"", "{\"CFBundleVersion\": \"0.2.0\"", "[\"CFBundleVersion\"]", "\"0.2.0\"", "\xff"}) {
        EXPECT_EQ(read(text).string("CFBundleVersion"), std::nullopt) << text;
        EXPECT_THAT(home_.log(), HasSubstr("fernhollow.json is no JSON object"));
        std::filesystem::remove(home_.path() / "fernhollow_debug.log");
    }
}

// The build writes the dictionary beside its programs, this one among them.
TEST(BundleInfoOfTheBuild, TellsTheVersion) {
    EXPECT_EQ(BundleInfo::main().string("CFBundleShortVersionString"), FERNHOLLOW_VERSION);
    EXPECT_EQ(BundleInfo::main().string("CFBundleVersion"), FERNHOLLOW_VERSION);
    EXPECT_EQ(applicationVersion(), FERNHOLLOW_VERSION);
    EXPECT_EQ(executablePath().filename(), "fernhollow_support_tests");
}

} // namespace
} // namespace fernhollow
