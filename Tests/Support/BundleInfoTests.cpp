#include "Support/ApplicationIdentity.h"
#include "Support/BundleInfo.h"
#include "Support/Testing.h"

#include <fstream>

namespace fernhollow::tests {
namespace {

TEST(BundleInfoFile, HoldsTextsAndIsEmptyAndLoggedWhenItCannotBeRead) {
    const TemporaryHome home;
    const auto file = home.path() / "fernhollow.json";
    const auto read = [&](const char* text) {
        std::ofstream(file) << text;
        return BundleInfo::read(file);
    };
    const BundleInfo info = read(R"({"Count": 7, "None": null, "Name": "Müller \"&\" Söhne"})");
    EXPECT_EQ(info.string("Name"), "Müller \"&\" Söhne");
    for (const char* key : {"Count", "None", "Missing", ""}) {
        EXPECT_EQ(info.string(key), std::nullopt) << key;
    }
    EXPECT_EQ(home.log(), "");
    for (const char* text : {"", "{\"Name\": \"0.2.0\"", "[\"Name\"]", "\xff"}) {
        EXPECT_EQ(read(text).string("Name"), std::nullopt) << text;
        EXPECT_THAT(home.log(), HasSubstr("fernhollow.json is not a JSON object"));
        std::filesystem::remove(home.path() / "fernhollow_debug.log");
    }
    std::filesystem::remove(file);
    EXPECT_EQ(BundleInfo::read(file).string("Name"), std::nullopt);
    EXPECT_THAT(home.log(), HasSubstr("fernhollow.json: No such file or directory"));
}

// The build writes the dictionary beside its programs, this one among them.
TEST(BundleInfoOfTheBuild, TellsTheVersion) {
    EXPECT_EQ(BundleInfo::main().string("CFBundleShortVersionString"), FERNHOLLOW_VERSION);
    EXPECT_EQ(BundleInfo::main().string("CFBundleVersion"), FERNHOLLOW_VERSION);
    EXPECT_EQ(applicationVersion(), FERNHOLLOW_VERSION);
    EXPECT_EQ(executablePath().filename(), "fernhollow_support_tests");
}

} // namespace
} // namespace fernhollow::tests
