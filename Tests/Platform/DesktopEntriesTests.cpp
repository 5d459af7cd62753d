#include "Platform/Surroundings.h"
#include "Platform/X11/ApplicationFolders.h"
#include "Platform/X11/CommandLine.h"
#include "Platform/X11/DesktopEntries.h"
#include "Platform/X11/Identifier.h"
#include "Platform/X11/MessageLocale.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/stat.h>

namespace fernhollow::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace std::string_literals;

class Entries : public ::testing::Test {
protected:
    DesktopEntries read(std::string_view locale = "") {
        DesktopEntries entries({surroundings.home() / "user", surroundings.home() / "system"}, locale);
        entries.refresh();
        return entries;
    }
    void add(const std::string& file, const std::string& lines) const {
        surroundings.write(file, "[Desktop Entry]\nType=Application\n" + lines);
    }
    static std::string name(const std::optional<DesktopEntry>& entry) {
        return entry ? std::string(entry->name) : "none";
    }

    Surroundings surroundings;
};

TEST_F(Entries, TakeTheNameInTheBestLocale) {
    add("user/files.desktop",
        "Name=Files\nName[pt]=Ficheiros\nName[pt_BR]=Arquivos\nName[sr]=Датотеке\n"
        "Name[sr@latin]=Datoteke\n\n[Desktop Action new]\nName=New Window\nName[pt_BR]=Nova\n");
    const std::vector<std::pair<std::string, std::string>> cases{{"pt_BR.UTF-8", "Arquivos"},
                                                                 {"pt_PT.UTF-8", "Ficheiros"},
                                                                 {"pt", "Ficheiros"},
                                                                 {"sr_RS@latin", "Datoteke"},
                                                                 {"sr_RS.UTF-8@latin", "Datoteke"},
                                                                 {"sr_RS", "Датотеке"},
                                                                 {"de_DE.UTF-8", "Files"},
                                                                 {"C.UTF-8", "Files"},
                                                                 {"POSIX", "Files"},
                                                                 {"", "Files"}};
    for (const auto& [locale, expected] : cases) {
        const DesktopEntries entries = read(locale);
        EXPECT_EQ(name(entries.withId("files")), expected) << locale;
    }
}

TEST_F(Entries, OfTheEarlierFolderWin) {
    add("user/editor.desktop", "Name=Mine\n");
    add("system/editor.desktop", "Name=Theirs\n");
    add("user/gone.desktop", "Hidden=true\nName=Gone\n");
    add("system/gone.desktop", "Name=Still here\n");
    add("system/kde/office.desktop", "Name=Office\n");
    const DesktopEntries entries = read();
    EXPECT_EQ(name(entries.withId("editor")), "Mine");
    EXPECT_EQ(name(entries.withId("gone")), "none");
    EXPECT_EQ(name(entries.withId("kde-office")), "Office");
}

TEST_F(Entries, ThatAreNotApplicationsAreIgnored) {
    surroundings.write("user/link.desktop", "[Desktop Entry]\nType=Link\nName=Link\n");
    surroundings.write("user/empty.desktop", "");
    surroundings.write("user/noise.desktop", "\xff\0=\n[[[\n=x\nName\n"s);
    surroundings.write("user/.desktop", "[Desktop Entry]\nType=Application\nName=Nameless\n");
    ASSERT_EQ(::mkfifo((surroundings.home() / "user/pipe.desktop").c_str(), 0600), 0);
    add("user/fine.desktop", "  Name =  Fine \\s one \r\n");
    add("user/unnamed.desktop", "");
    const DesktopEntries entries = read();
    for (const char* id : {"link", "empty", "noise", "pipe", ""}) {
        EXPECT_EQ(name(entries.withId(id)), "none") << id;
    }
    EXPECT_EQ(name(entries.withId("fine")), "Fine   one");
    EXPECT_EQ(name(entries.withId("unnamed")), "unnamed");
}

TEST_F(Entries, AreReadAgainWhenSomethingIsInstalled) {
    add("system/kde/first.desktop", "Name=First\n");
    DesktopEntries entries = read();
    EXPECT_EQ(name(entries.withId("first")), "none");
    const auto refreshed = [&](const char* id) {
        return eventually([&] {
            entries.refresh();
            return entries.withId(id).has_value();
        });
    };
    const auto folder = surroundings.home() / "user"; // did not exist before
    add("user/second.desktop", "Name=Second\n");
    EXPECT_TRUE(refreshed("second"));
    ::usleep(20'000); // the file system's clock ticks slowly
    add("system/kde/third.desktop", "Name=Third\n");
    EXPECT_TRUE(refreshed("kde-third"));
    ::usleep(20'000);
    std::filesystem::remove(folder / "second.desktop");
    EXPECT_TRUE(eventually([&] {
        entries.refresh();
        return !entries.withId("second");
    }));
}

TEST_F(Entries, SurviveLinksThatLeadBack) {
    add("user/one.desktop", "Name=One\n");
    std::filesystem::create_directory_symlink(surroundings.home() / "user",
                                              surroundings.home() / "user/loop");
    EXPECT_EQ(name(read().withId("one")), "One");
}

TEST(ExecValues, SplitIntoTheirProgramAndItsArguments) {
    struct Case {
        std::string exec;
        CommandProgram expected;
    };
    const std::vector<Case> cases{
        {"mousepad %U", {"mousepad", false}},
        {"/usr/bin/gimp-2.10", {"/usr/bin/gimp-2.10", false}},
        {"libreoffice --writer %U", {"libreoffice", true}},
        {"\"/opt/My Editor/edit\" %F", {"/opt/My Editor/edit", false}},
        {R"("/opt/a \"b\" \$c/run" %F)", {R"(/opt/a "b" $c/run)", false}},
        {"env GDK_BACKEND=x11 /snap/bin/notes %u", {"/snap/bin/notes", false}},
        {"python3 /usr/share/draw/main.py %f", {"/usr/share/draw/main.py", false}},
        {"/usr/bin/python3 -m thonny %F", {"thonny", false}},
        {"sh -c \"exec foo\"", {"", false}},
        {"bash", {"", false}},
        {"app --file=%f", {"app", true}},
        {"\"unclosed", {"", false}},
        {"", {"", false}},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(programOf(splitExec(each.exec)), each.expected) << each.exec;
    }
}

TEST(Identifiers, ArePlainTextOfABoundedLength) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"XTerm", "XTerm"},
        {"  two words ", "two words"},
        {"caf\xc3\xa9", "café"},
        {"caf\xe9", "café"},
        {"\xff\xfe", "ÿþ"},
        {"line\nbreak\x01\x7f", "linebreak"},
        {"before\0after"s, "before"},
        {"\t \n", ""},
        {std::string(10'000, 'x'), std::string(255, 'x')},
        {"x" + std::string(127, '\xc3')
                   .replace(0, 127,
                            [] {
                                std::string text;
                                for (int i = 0; i < 300; ++i) {
                                    text += "é";
                                }
                                return text;
                            }()),
         "x" +
             [] {
                 std::string text;
                 for (int i = 0; i < 127; ++i) {
                     text += "é";
                 }
                 return text;
             }()},
    };
    for (const auto& [bytes, expected] : cases) {
        EXPECT_EQ(plainIdentifier(bytes), expected);
    }
    EXPECT_LE(plainIdentifier(std::string(300, '\xe9')).size(), 255U) << "grows when it becomes UTF-8";
}

TEST(Locale, IsTheFirstVariableThatIsSet) {
    Surroundings surroundings;
    EXPECT_EQ(messageLocale(), "");
    surroundings.set("LANG", "de_DE.UTF-8");
    EXPECT_EQ(messageLocale(), "de_DE.UTF-8");
    surroundings.set("LC_MESSAGES", "pt_BR.UTF-8");
    surroundings.set("LC_ALL", "");
    EXPECT_EQ(messageLocale(), "pt_BR.UTF-8");
    surroundings.set("LC_ALL", "C");
    EXPECT_EQ(messageLocale(), "C");
    EXPECT_THAT(localeCandidates("sr_RS.UTF-8@latin"), ElementsAre("sr_RS@latin", "sr_RS", "sr@latin", "sr"));
    EXPECT_THAT(localeCandidates("C.UTF-8"), IsEmpty());
}

TEST(Folders, AreThoseOfTheSpecificationAndOfFlatpakAndSnap) {
    Surroundings surroundings;
    const auto home = surroundings.home();
    EXPECT_THAT(applicationFolders(), ElementsAre(home / ".local/share/applications",
                                                  "/usr/local/share/applications", "/usr/share/applications",
                                                  home / ".local/share/flatpak/exports/share/applications",
                                                  "/var/lib/flatpak/exports/share/applications",
                                                  "/var/lib/snapd/desktop/applications"));
    surroundings.set("XDG_DATA_HOME", "/data");
    surroundings.set("XDG_DATA_DIRS", "/var/lib/flatpak/exports/share/::relative:/usr/share/:/usr/share");
    EXPECT_THAT(applicationFolders(),
                ElementsAre("/data/applications", "/var/lib/flatpak/exports/share/applications",
                            "/usr/share/applications", "/data/flatpak/exports/share/applications",
                            "/var/lib/snapd/desktop/applications"));
}

} // namespace
} // namespace fernhollow::test
