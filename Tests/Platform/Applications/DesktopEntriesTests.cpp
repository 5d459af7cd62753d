#include "Platform/Applications/ApplicationFolders.h"
#include "Platform/Applications/DesktopEntries.h"
#include "Platform/Applications/MessageLocale.h"
#include "Platform/Surroundings.h"

#include <sys/stat.h>
#include <unistd.h>

namespace fernhollow::tests {
namespace {

using namespace std::string_literals;
using Texts = std::vector<std::pair<std::string, std::string>>;

class Entries : public testing::Test {
protected:
    DesktopEntries read(std::string_view locale = "") {
        DesktopEntries entries({surroundings.path() / "user", surroundings.path() / "system"}, locale);
        entries.refresh();
        return entries;
    }
    void add(const std::string& file, const std::string& lines) const {
        surroundings.write(file, "[Desktop Entry]\nType=Application\n" + lines);
    }
    static std::string name(const DesktopEntries& entries, std::string_view id) {
        const auto entry = entries.withId(id);
        return entry ? std::string(entry->name) : "none";
    }

    Surroundings surroundings;
};

TEST_F(Entries, TakeTheNameInTheBestLocale) {
    add("user/files.desktop",
        "Name=Files\nName[pt]=Ficheiros\nName[pt_BR]=Arquivos\nName[sr]=Датотеке\n"
        "Name[sr@latin]=Datoteke\n\n[Desktop Action new]\nName=New Window\nName[pt_BR]=Nova\n");
    const Texts names{{"pt_BR.UTF-8", "Arquivos"},       {"pt_PT.UTF-8", "Ficheiros"},
                      {"sr_RS.UTF-8@latin", "Datoteke"}, {"sr_RS", "Датотеке"},
                      {"de_DE.UTF-8", "Files"},          {"C.UTF-8", "Files"}};
    for (const auto& [locale, expected] : names) {
        EXPECT_EQ(name(read(locale), "files"), expected) << locale;
    }
}

TEST_F(Entries, AreThoseOfTheEarlierFolderAndOfApplications) {
    add("user/editor.desktop", "  Name =  Fine \\s one \r\n");
    add("system/editor.desktop", "Name=Theirs\n");
    add("user/gone.desktop", "Hidden=true\nName=Gone\n");
    add("system/gone.desktop", "Name=Still here\n");
    add("system/kde/unnamed.desktop", "");
    surroundings.write("user/link.desktop", "[Desktop Entry]\nType=Link\nName=Link\n");
    surroundings.write("user/noise.desktop", "\xff\0=\n[[[\n=x\nName\n"s);
    ASSERT_EQ(::mkfifo((surroundings.path() / "user/pipe.desktop").c_str(), 0600), 0);
    std::filesystem::create_directory_symlink(surroundings.path() / "user",
                                              surroundings.path() / "user/loop");
    const DesktopEntries entries = read();
    EXPECT_EQ(name(entries, "editor"), "Fine   one");
    EXPECT_EQ(name(entries, "kde-unnamed"), "kde-unnamed");
    for (const char* id : {"gone", "link", "noise", "pipe", ""}) {
        EXPECT_EQ(name(entries, id), "none") << id;
    }
}

TEST_F(Entries, AreReadAgainWhenSomethingIsInstalledOrRemoved) {
    add("system/kde/first.desktop", "");
    DesktopEntries entries = read();
    const auto becomes = [&](const char* id, const char* expected) {
        entries.refresh();
        EXPECT_EQ(name(entries, id), expected);
        ::usleep(20'000); // the file system's clock ticks slowly
    };
    becomes("kde-first", "kde-first");
    add("user/second.desktop", ""); // a folder that did not exist before
    becomes("second", "second");
    add("system/kde/third.desktop", "");
    becomes("kde-third", "kde-third");
    std::filesystem::remove(surroundings.path() / "user/second.desktop");
    becomes("second", "none");
}

TEST(Folders, AreThoseOfTheSpecificationAndOfFlatpakAndSnap) {
    Surroundings surroundings;
    const auto home = surroundings.path();
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
} // namespace fernhollow::tests
