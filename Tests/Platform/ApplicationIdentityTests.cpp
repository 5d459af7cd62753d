#include "Platform/Surroundings.h"
#include "Platform/X11/ApplicationResolver.h"
#include "Platform/X11/DesktopEntries.h"
#include "Support/ApplicationIdentity.h"

#include <QCoreApplication>
#include <QProcess>
#include <gmock/gmock.h>

#include <unistd.h>

namespace fernhollow::test {
namespace {

// A window, the process behind it, and the application that both speak of.
struct Case {
    const char* what;
    WindowFacts window;
    std::optional<Process> process;
    const char* id;
    const char* name;
};

constexpr pid_t elsewhere = 4'000'000; // beyond what the kernel hands out here

WindowFacts byClass(std::string instance, std::string windowClass) {
    return {{}, {}, std::move(instance), std::move(windowClass), 0};
}

WindowFacts byProcess(std::string windowClass = {}) {
    return {{}, {}, {}, std::move(windowClass), elsewhere};
}

class Identity : public ::testing::Test {
protected:
    Identity() {
        add("org.gnome.TextEditor", "Name=Text Editor\nExec=gnome-text-editor %U");
        add("org.kde.kate", "Name=Kate\nExec=kate -b %U");
        add("org.xfce.mousepad", "Name=Mousepad\nExec=mousepad %U");
        add("firefox-esr", "Name=Firefox ESR\nExec=/usr/lib/firefox-esr/firefox-esr %u");
        add("debian-xterm", "Name=XTerm\nExec=xterm\nStartupWMClass=XTerm");
        add("google-chrome",
            "Name=Chrome\nExec=/opt/google/chrome/google-chrome %U\nStartupWMClass=Google-chrome");
        add("chrome-mail",
            "Name=Mail\nExec=/opt/google/chrome/google-chrome --app-id=mail\nStartupWMClass=crx_mail");
        add("hidden-viewer", "Name=Hidden Viewer\nNoDisplay=true\nExec=viewer %U\nStartupWMClass=Viewer");
        add("viewer2", "Name=Viewer\nExec=viewer2 %U\nStartupWMClass=Viewer");
        add("settings-helper", "Name=Helper\nNoDisplay=true\nExec=settings-helper");
        add("one.calculator", "Name=First Calculator\nExec=calc1");
        add("two.calculator", "Name=Second Calculator\nExec=calc2");
        add("gimp", "Name=GIMP\nExec=gimp-2.10 %U");
        add("meld", "Name=Meld\nExec=meld %F");
        add("draw", "Name=Draw\nExec=python3 /usr/share/draw/main.py");
        add("python3.11", "Name=Python (v3.11)\nExec=/usr/bin/python3.11");
        add("vim", "Name=Vim\nExec=vim %F\nTerminal=true");
        add("gvim", "Name=GVim\nExec=gvim -f %F");
        add("office-writer", "Name=Writer\nExec=office --writer %U");
        add("office-calc", "Name=Calc\nExec=office --calc %U");
        add("notes_notes", "Name=Notes\nExec=env BAMF_DESKTOP_FILE_HINT=x /snap/bin/notes %U");
    }

    void add(const std::string& id, const std::string& lines) const {
        surroundings.write("apps/" + id + ".desktop", "[Desktop Entry]\nType=Application\n" + lines + "\n");
    }

    Surroundings surroundings;
    DesktopEntries entries{{surroundings.home() / "apps"}, "en_US.UTF-8"};
};

const std::vector<Case> cases{
    {"the GTK id comes first",
     {"org.gnome.TextEditor", "org.kde.kate", "x", "XTerm", 0},
     {},
     "org.gnome.TextEditor",
     "Text Editor"},
    {"a GTK id that nobody knows", {"org.unknown", {}, "xterm", "XTerm", 0}, {}, "debian-xterm", "XTerm"},
    {"the KDE property, an id", {{}, "org.kde.kate", "x", "XTerm", 0}, {}, "org.kde.kate", "Kate"},
    {"the KDE property, a path",
     {{}, "/usr/share/applications/org.kde.kate.desktop", "x", "y", 0},
     {},
     "org.kde.kate",
     "Kate"},
    {"StartupWMClass is the class", byClass("xterm", "XTerm"), {}, "debian-xterm", "XTerm"},
    {"StartupWMClass is the instance", byClass("crx_mail", "Chromium"), {}, "chrome-mail", "Mail"},
    {"the class before the instance", byClass("crx_mail", "Google-chrome"), {}, "google-chrome", "Chrome"},
    {"a shown entry before a hidden one", byClass("viewer", "Viewer"), {}, "viewer2", "Viewer"},
    {"a hidden entry will do", byClass("x", "settings-helper"), {}, "settings-helper", "Helper"},
    {"an id", byClass("Navigator", "firefox-esr"), {}, "firefox-esr", "Firefox ESR"},
    {"an id in other letters", byClass("Navigator", "Firefox-ESR"), {}, "firefox-esr", "Firefox ESR"},
    {"an id with a blank", byClass("x", "Firefox ESR"), {}, "firefox-esr", "Firefox ESR"},
    {"a last component", byClass("mousepad", "Mousepad"), {}, "org.xfce.mousepad", "Mousepad"},
    {"a last component that two share", byClass("calculator", "Calculator"), {}, "Calculator", "Calculator"},
    {"the program", byProcess("Gimp"), Process{"/usr/bin/gimp-2.10", {"gimp-2.10"}}, "gimp", "GIMP"},
    {"the entry without arguments", byProcess("x"), Process{"/opt/google/chrome/google-chrome", {}},
     "google-chrome", "Chrome"},
    {"arguments that differ say nothing", byProcess("Office"), Process{"/usr/bin/office", {"office"}},
     "Office", "Office"},
    {"started by another name", byProcess("x"), Process{"/usr/bin/vim.gtk3", {"gvim"}}, "gvim", "GVim"},
    {"a terminal program has no window", byProcess("X"), Process{"/usr/bin/vim", {"vim"}}, "X", "X"},
    {"a script", byProcess("x"),
     Process{"/usr/bin/python3.11", {"/usr/bin/python3", "/usr/bin/meld", "a", "b"}}, "meld", "Meld"},
    {"a script that its entry names", byProcess("x"),
     Process{"/usr/bin/python3.11", {"python3", "/usr/share/draw/main.py"}}, "draw", "Draw"},
    {"an interpreter alone", byProcess("Tk"), Process{"/usr/bin/python3.11", {"python3"}}, "Tk", "Tk"},
    {"a script that nobody knows", byProcess("Tk"), Process{"/usr/bin/python3.11", {"python3", "my.py"}},
     "Tk", "Tk"},
    {"a snap", byProcess("x"), Process{"/snap/notes/12/usr/bin/notes", {"/snap/notes/12/usr/bin/notes"}},
     "notes_notes", "Notes"},
    {"somebody else's process", byProcess("x"), Process{"", {"mousepad"}}, "org.xfce.mousepad", "Mousepad"},
    {"a process that has ended", byProcess("Odd"), {}, "Odd", "Odd"},
    {"no class, a process", byProcess(), Process{"/opt/odd/tool", {"tool"}}, "tool", "tool"},
    {"an instance alone", byClass("tool", ""), {}, "tool", "tool"},
};

TEST_F(Identity, FollowsWhatTheWindowAndItsProcessSay) {
    for (const Case& each : cases) {
        const auto found = resolveApplication(each.window, entries, [&each](pid_t) { return each.process; });
        ASSERT_TRUE(found) << each.what;
        EXPECT_EQ(*found->bundleIdentifier, each.id) << each.what;
        EXPECT_EQ(*found->localizedName, each.name) << each.what;
    }
}

TEST_F(Identity, OfOurOwnWindowsIsOurs) {
    const WindowFacts window{"org.gnome.TextEditor", {}, "xterm", "XTerm", ::getpid()};
    EXPECT_EQ(resolveApplication(window, entries),
              (FrontmostApplication{std::string(applicationIdentifier), std::string(applicationName)}));
}

TEST_F(Identity, OfAWindowThatSaysNothingIsUnknown) {
    EXPECT_EQ(resolveApplication({}, entries), std::nullopt);
    EXPECT_EQ(resolveApplication(byProcess(), entries, [](pid_t) { return std::nullopt; }), std::nullopt);
    EXPECT_EQ(resolveApplication(byClass("\n", "\x01"), entries), std::nullopt);
}

TEST_F(Identity, OfAProgramInstalledLaterIsFound) {
    EXPECT_EQ(resolveApplication(byClass("x", "Newcomer"), entries)->bundleIdentifier, "Newcomer");
    ::usleep(20'000); // the file system's clock ticks slowly
    add("newcomer", "Name=New");
    EXPECT_EQ(resolveApplication(byClass("x", "Newcomer"), entries)->localizedName, "New");
}

TEST(Processes, AreReadFromTheSystem) {
    const auto own = readProcess(::getpid());
    ASSERT_TRUE(own);
    EXPECT_EQ(own->executable, QCoreApplication::applicationFilePath().toStdString());

    const Surroundings surroundings;
    const auto program = surroundings.home() / "my program";
    std::filesystem::copy_file("/bin/sleep", program);
    QProcess child;
    child.start(QString::fromStdString(program), {QStringLiteral("60")});
    ASSERT_TRUE(child.waitForStarted());
    std::filesystem::remove(program); // as an update replaces what runs
    EXPECT_TRUE(eventually([&] {
        const auto process = readProcess(static_cast<pid_t>(child.processId()));
        return process && process->executable == program &&
               process->arguments == std::vector<std::string>{program, "60"};
    }));
    child.kill();
    child.waitForFinished();

    EXPECT_EQ(readProcess(elsewhere), std::nullopt);
    EXPECT_EQ(readProcess(0), std::nullopt);
}

} // namespace
} // namespace fernhollow::test
