#include "Support/SignedFeed.h"
#include "Support/Testing.h"
#include "Updates/UpdateError.h"
#include "Updates/UpdateTransfer.h"

#include <functional>

namespace fernhollow::tests {
namespace {

const std::string server = "https://updates.example";

class Appcast : public testing::Test {
protected:
    UpdateHost host(const std::string& version = "0.1.0") const {
        return {.version = version,
                .systemVersion = "6.1.0",
                .packageType = "appimage",
                .feedUrl = server + "/appcast.xml",
                .publicKey = maker_.publicKey()};
    }

    AppcastItem release(const std::string& version) const {
        return maker_.release(version, "package", server + "/" + version + ".AppImage");
    }

    /// The version that is offered, "none", or why there is an error.
    std::string offered(const std::vector<AppcastItem>& items) const {
        try {
            const auto item = newestUpdate(parseAppcast(writeAppcast(items)), host());
            return item ? item->version : "none";
        } catch (const UpdateError& error) {
            EXPECT_EQ(error.reason(), UpdateError::Reason::feed);
            return error.what();
        }
    }

    /// Likewise, of a release that its maker changed with `change` before it was described.
    template<class Change>
    std::string offeredAs(Change change) const {
        AppcastItem item = release("0.2.0");
        change(item);
        return offered({maker_.describe(item)});
    }

    const TemporaryHome home_;
    const Maker maker_{home_.path() / "key"};
};

TEST(VersionComparison, OrdersByParts) {
    const std::vector<std::string> ascending{
        "0",     "0.0.1", "0.9",  "0.10", "1.0a2",     "1.0b1",    "1.0",
        "1.0.1", "1.2",   "1.10", "2.0",  "2026.3.05", "2026.3.6", "99999999999999999999"};
    for (std::size_t i = 0; i < ascending.size(); ++i) {
        for (std::size_t j = 0; j < ascending.size(); ++j) {
            EXPECT_TRUE(compareVersions(ascending[i], ascending[j]) == (i <=> j))
                << ascending[i] << ' ' << ascending[j];
        }
    }
    EXPECT_TRUE(compareVersions("1.0", "1.0.0") == 0);
    EXPECT_TRUE(compareVersions("1.00", "1.0") == 0);
    EXPECT_TRUE(compareVersions("", "0.0") == 0);
}

TEST_F(Appcast, OffersTheNewestReleaseThatFits) {
    EXPECT_EQ(offered({release("0.2.0"), release("0.10.0"), release("0.9.0")}), "0.10.0");
    EXPECT_EQ(offered({release("0.1.0"), release("0.0.9"), release("0.1.0b7")}), "none");
    EXPECT_EQ(offered({}), "none");
    EXPECT_EQ(offeredAs([](auto& item) { item.channel = "beta"; }), "none");
    EXPECT_EQ(offeredAs([](auto& item) { item.operatingSystem = "windows"; }), "none");
    EXPECT_EQ(offeredAs([](auto& item) { item.packageType = "deb"; }), "none");
    EXPECT_EQ(offeredAs([](auto& item) { item.minimumSystemVersion = "6.2"; }), "none");
    EXPECT_EQ(offeredAs([](auto& item) { item.minimumSystemVersion = "6.1"; }), "0.2.0");
    EXPECT_EQ(offeredAs([](auto& item) { item.operatingSystem = item.packageType = ""; }), "0.2.0");

    auto source = host();
    source.packageType.clear();
    EXPECT_TRUE(newestUpdate({release("0.2.0")}, source)) << "a build from source hears of every kind";
}

TEST_F(Appcast, RefusesWhatItsMakerDidNotDescribeSo) {
    const auto forged = "The update's description is not signed by Fernhollow's maker.";
    const std::vector<std::function<void(AppcastItem&)>> forgeries{
        [](AppcastItem& item) { item.version = "0.3.0"; }, // an old package offered as a new one
        [](AppcastItem& item) { item.releaseNotes = "Call this number."; },
        [](AppcastItem& item) { item.length = 1; },
        [](AppcastItem& item) { item.url = server + "/other"; },
        [](AppcastItem& item) { item.itemSignature.clear(); },
        [](AppcastItem& item) { item.itemSignature = item.edSignature; },
    };
    for (const auto& forge : forgeries) {
        AppcastItem item = release("0.2.0");
        forge(item);
        EXPECT_EQ(offered({release("0.1.5"), item}), forged);
    }
    const Maker another(home_.path() / "another");
    EXPECT_EQ(offered({another.release("0.2.0", "package", server + "/a")}), forged);
    // Moving text from one field to the next changes no concatenation, but what is signed.
    AppcastItem moved = release("0.2.0");
    moved.releaseNotes.insert(0, 1, moved.title.back());
    moved.title.pop_back();
    EXPECT_EQ(offered({moved}), forged);
}

TEST_F(Appcast, RefusesPackagesFromElsewhereAndUnsignedOnes) {
    for (const auto* url :
         {"http://updates.example/p", "https://evil.example/p", "https://updates.example:8443/p",
          "https://updates.example.evil.example/p", "ftp://updates.example/p", "file:///etc/passwd",
          "//updates.example/p", "p", "https://updates.example@evil.example/p", ""}) {
        EXPECT_THAT(offeredAs([&](auto& item) { item.url = url; }), HasSubstr("another place")) << url;
    }
    EXPECT_EQ(offeredAs([](auto& item) { item.edSignature.clear(); }), "The update is not signed.");
    EXPECT_EQ(offeredAs([](auto& item) { item.edSignature.resize(40); }), "The update is not signed.");
    EXPECT_THAT(offeredAs([](auto& item) { item.length = 0; }), HasSubstr("length"));
    EXPECT_THAT(offeredAs([](auto& item) { item.length = UpdateTransfer::maximumPackage + 1; }),
                HasSubstr("length"));
}

TEST_F(Appcast, RefusesBombsAndRubbish) {
    const std::string bomb = R"(<!DOCTYPE rss [<!ENTITY a "aaaaaaaaaa"><!ENTITY b "&a;&a;&a;&a;&a;&a;&a;&a;">
        <!ENTITY c "&b;&b;&b;&b;&b;&b;&b;&b;">]><rss><channel><item><title>&c;</title></item></channel></rss>)";
    const std::string outside =
        R"(<!DOCTYPE rss [<!ENTITY a SYSTEM "file:///etc/passwd">]><rss><title>&a;</title></rss>)";
    std::string deep;
    for (int depth = 0; depth < 100'000; ++depth) {
        deep += "<item>";
    }
    std::string many = "<rss xmlns:f=\"https://fernhollow.app/xml/appcast\">";
    for (int i = 0; i < 2000; ++i) {
        many += "<item><enclosure f:version=\"1\"/></item>";
    }
    for (const std::string& bad :
         {bomb, outside, deep, many + "</rss>", std::string("<html>"), std::string("<rss><item></rss>")}) {
        EXPECT_THROW(parseAppcast(bad), UpdateError) << bad.substr(0, 40);
    }
}

TEST_F(Appcast, ChecksSignaturesStrictly) {
    const SigningKey key = SigningKey::create(home_.path() / "own");
    const std::string signature = key.sign("message");
    EXPECT_TRUE(isSignedBy(key.publicKey(), signature, "message"));
    EXPECT_FALSE(isSignedBy(key.publicKey(), signature, "messagE"));
    EXPECT_FALSE(isSignedBy(maker_.publicKey(), signature, "message"));
    for (const std::string& bad :
         {std::string(), signature + "=", signature + " ", " " + signature, signature.substr(1),
          signature.substr(0, 86), signature + signature, std::string("!") + signature.substr(1)}) {
        EXPECT_FALSE(isSignedBy(key.publicKey(), bad, "message")) << bad;
        EXPECT_FALSE(isSignedBy(bad, signature, "message")) << bad;
    }
}

} // namespace
} // namespace fernhollow::tests
