#include "AppcastWriter.h"
#include "Release.h"
#include "Support/Testing.h"
#include "Updates/Appcast.h"
#include "Updates/UpdateError.h"

#include <QProcess>

#include <fstream>
#include <sys/stat.h>

namespace fernhollow::tests {
namespace {

/// A maker at their desk, with the command.
class ReleaseCommand : public testing::Test {
protected:
    struct Done {
        int status;
        std::string output, error;
    };

    using Arguments = std::vector<std::string>;

    Done run(const Arguments& arguments) {
        QStringList texts;
        for (const std::string& argument : arguments) {
            texts.append(QString::fromStdString(argument));
        }
        QProcess process;
        process.start(QStringLiteral(RELEASE_TOOL), texts);
        process.waitForFinished();
        return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
                process.readAllStandardOutput().toStdString(), process.readAllStandardError().toStdString()};
    }

    std::string path(const char* name) const { return home_.path() / name; }
    void write(const char* name, const std::string& text) const {
        std::ofstream(home_.path() / name, std::ios::binary) << text;
    }
    std::string read(const char* name) const { return contents(home_.path() / name); }

    std::string makeKeys(const char* name = "key") { return run({"keys", path(name)}).output.substr(0, 44); }

    void tellProgram(const std::string& publicKey) const {
        write("fernhollow.json", R"({"CFBundleVersion": "0.2.0", "CFBundleShortVersionString": "0.2",
                                     "UpdateFeedURL": ")" +
                                     feedUrl + R"(", "UpdatePublicKey": ")" + publicKey + "\"}");
    }

    Done publish(const Arguments& more = {}, const char* url = "https://example.org/F.AppImage",
                 const char* type = "appimage") {
        Arguments arguments{"feed",           "--key", path("key"), "--program", path("fernhollow.json"),
                            "--package-type", type,    "--url",     url};
        arguments.insert(arguments.end(), more.begin(), more.end());
        arguments.insert(arguments.end(), {path("package"), path("appcast.xml")});
        return run(arguments);
    }

    UpdateHost host(const std::string& publicKey) const {
        return {"0.1.0", "6.1.0", "appimage", feedUrl, publicKey};
    }

    const std::string feedUrl = "https://example.org/appcast.xml";
    const TemporaryHome home_;
};

TEST_F(ReleaseCommand, MakesKeysForTheirOwnerAloneAndSignsPackages) {
    const std::string publicKey = makeKeys();
    const std::string key = read("key");
    EXPECT_EQ(modeOf(home_.path() / "key"), 0600U);
    EXPECT_THAT(key, testing::Not(HasSubstr(publicKey)));
    EXPECT_THAT(run({"keys", path("key")}).error, HasSubstr("File exists"));
    EXPECT_EQ(read("key"), key);

    write("package", std::string("p\0ckage", 7));
    const Arguments sign{"sign", "--key", path("key"), path("package")};
    const Done done = run(sign);
    ASSERT_THAT(done.output, MatchesRegex("fernhollow:edSignature=\"[^\"]{88}\" length=\"7\"\n"));
    EXPECT_TRUE(isSignedBy(publicKey, done.output.substr(24, 88), std::string_view("p\0ckage", 7)));

    ::chmod((home_.path() / "key").c_str(), 0640);
    const Done refused = run(sign);
    EXPECT_EQ(refused.status, 1);
    EXPECT_THAT(refused.error, HasSubstr("others can read this key"));
    EXPECT_THAT(refused.output, IsEmpty());
}

TEST_F(ReleaseCommand, WritesAFeedThatProgramsTakeAndThatNobodyElseCanChange) {
    const std::string publicKey = makeKeys();
    tellProgram(publicKey);
    write("package", "package");
    write("notes", "Faster & smaller: <b> is not a tag here.\r\n- \"quotes\"\n- Ünïcode\n");
    const Done done = publish({"--notes", path("notes"), "--minimum-system-version", "5.10"});
    ASSERT_EQ(done.status, 0) << done.error;

    const auto found = newestUpdate(parseAppcast(read("appcast.xml")), host(publicKey));
    ASSERT_TRUE(found);
    EXPECT_EQ(found->version, "0.2.0");
    EXPECT_EQ(found->title, "Fernhollow 0.2");
    EXPECT_EQ(found->releaseNotes, "Faster & smaller: <b> is not a tag here.\n- \"quotes\"\n- Ünïcode");
    EXPECT_EQ(found->length, 7U);
    EXPECT_TRUE(isSignedBy(publicKey, found->edSignature, "package"));

    std::string changed = read("appcast.xml");
    changed.replace(changed.find("Faster"), 6, "Slower");
    EXPECT_THROW(newestUpdate(parseAppcast(changed), host(publicKey)), UpdateError);
}

TEST_F(ReleaseCommand, KeepsOtherReleasesAndReplacesItsOwn) {
    const std::string publicKey = makeKeys();
    tellProgram(publicKey);
    write("package", "first");
    ASSERT_EQ(publish({"--version", "0.1.5"}).status, 0);
    ASSERT_EQ(publish({}, "https://example.org/f.deb", "deb").status, 0);
    ASSERT_EQ(publish().status, 0);
    write("package", "second");
    ASSERT_EQ(publish().status, 0);

    const auto items = parseAppcast(read("appcast.xml"));
    ASSERT_EQ(items.size(), 3U);
    EXPECT_EQ(items[0].packageType, "appimage");
    EXPECT_TRUE(isSignedBy(publicKey, items[0].edSignature, "second"));
    EXPECT_EQ(items[1].packageType, "deb");
    EXPECT_EQ(items[2].version, "0.1.5");
}

TEST_F(ReleaseCommand, WritesNothingThatProgramsWouldRefuse) {
    const std::string publicKey = makeKeys();
    tellProgram(publicKey);
    write("package", "package");
    ASSERT_EQ(publish().status, 0);
    const std::string feed = read("appcast.xml");

    const auto expectRefused = [&](const Done& done, const char* what) {
        EXPECT_EQ(done.status, 1) << what;
        EXPECT_THAT(done.error, HasSubstr("fernhollow-release: ")) << what;
        EXPECT_EQ(read("appcast.xml"), feed) << what;
    };
    expectRefused(publish({}, "https://elsewhere.org/F.AppImage"), "another host");
    expectRefused(publish({}, "https://example.org/F.AppImage", "rpm"), "a kind that nobody installs");
    expectRefused(publish({"--notes", path("missing")}), "notes that are not there");
    write("package", "");
    expectRefused(publish(), "an empty package");
    write("package", "package");
    tellProgram(makeKeys("other"));
    expectRefused(publish(), "another key than the program's");
    EXPECT_THAT(publish().error, HasSubstr("another public key"));
    tellProgram(publicKey);
    write("appcast.xml", feed + "<");
    EXPECT_EQ(publish().status, 1) << "a feed that cannot be read is not replaced";
    EXPECT_EQ(read("appcast.xml"), feed + "<");
}

} // namespace
} // namespace fernhollow::tests
