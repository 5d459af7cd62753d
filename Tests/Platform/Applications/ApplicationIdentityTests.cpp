#include "Platform/Applications/ApplicationResolver.h"
#include "Platform/Applications/DesktopEntries.h"
#include "Platform/Surroundings.h"

#include <QProcess>

#include <unistd.h>

namespace fernhollow::tests {
namespace {

using namespace std::string_literals;

const std::vector<std::pair<const char*, const char*>> installed{
    {"org.gnome.TextEditor", "Exec=gnome-text-editor %U"},
    {"org.kde.kate", "Exec=kate -b %U"},
    {"org.xfce.mousepad", "Exec=mousepad %U"},
    {"firefox-esr", "Exec=/usr/lib/firefox-esr/firefox-esr %u"},
    {"debian-xterm", "Exec=xterm\nStartupWMClass=XTerm"},
    {"chrome", "Exec=/opt/chrome/chrome %U\nStartupWMClass=Chrome"},
    {"chrome-mail", "Exec=/opt/chrome/chrome --app-id=mail\nStartupWMClass=crx_mail"},
    {"hidden-viewer", "NoDisplay=true\nExec=viewer %U\nStartupWMClass=Viewer"},
    {"viewer2", "Exec=viewer2 %U\nStartupWMClass=Viewer"},
    {"one.calculator", "Exec=calc1"},
    {"two.calculator", "Exec=calc2"},
    {"meld", "Exec=meld %F"},
    {"python3.11", "Exec=/usr/bin/python3.11"},
    {"gvim", "Exec=gvim -f %F"},
    {"notes_notes", "Exec=env HINT=x /snap/bin/notes %U"},
};

// A window, the process behind it, and the application that both speak of.
struct Case {
    const char* what;
    WindowFacts window;
    std::optional<Process> process;
    const char* id; ///< empty where none can be known
};

constexpr pid_t elsewhere = 4'000'000; // beyond what the kernel hands out here

WindowFacts byClass(const char* instance, const char* windowClass) {
    return {{}, {}, instance, windowClass, 0};
}

WindowFacts byProcess(const char* windowClass) {
    return {{}, {}, {}, windowClass, elsewhere};
}

const std::vector<Case> cases{
    {"the GTK id", {"org.gnome.TextEditor", "org.kde.kate", "x", "XTerm", 0}, {}, "org.gnome.TextEditor"},
    {"a GTK id without an entry", {"org.unknown", {}, "xterm", "XTerm", 0}, {}, "debian-xterm"},
    {"the KDE property", {{}, "/a/org.kde.kate.desktop", "x", "XTerm", 0}, {}, "org.kde.kate"},
    {"StartupWMClass is the class", byClass("xterm", "XTerm"), {}, "debian-xterm"},
    {"StartupWMClass is the instance", byClass("crx_mail", "Chromium"), {}, "chrome-mail"},
    {"the class before the instance", byClass("crx_mail", "Chrome"), {}, "chrome"},
    {"a shown entry before a hidden one", byClass("viewer", "Viewer"), {}, "viewer2"},
    {"an id in other letters", byClass("x", "Firefox ESR"), {}, "firefox-esr"},
    {"a last component", byClass("mousepad", "Mousepad"), {}, "org.xfce.mousepad"},
    {"a last component that two share", byClass("calculator", "Calculator"), {}, "Calculator"},
    {"an instance alone", byClass("tool", ""), {}, "tool"},
    {"the entry without arguments", byProcess("x"), Process{"/opt/chrome/chrome", {}}, "chrome"},
    {"started by another name", byProcess("x"), Process{"/usr/bin/vim.gtk3", {"gvim"}}, "gvim"},
    {"a script", byProcess("x"), Process{"/usr/bin/python3.11", {"python3", "/usr/bin/meld", "a"}}, "meld"},
    {"an interpreter alone", byProcess("Tk"), Process{"/usr/bin/python3.11", {"python3"}}, "Tk"},
    {"a snap", byProcess("x"), Process{"/snap/notes/12/usr/bin/notes", {}}, "notes_notes"},
    {"another user's process", byProcess("x"), Process{"", {"mousepad"}}, "org.xfce.mousepad"},
    {"no class, a process", byProcess(""), Process{"/opt/odd/tool", {"tool"}}, "tool"},
    {"a process that has ended", byProcess(""), {}, ""},
};

TEST(Identity, FollowsWhatTheWindowAndItsProcessSay) {
    const Surroundings surroundings;
    for (const auto& [id, lines] : installed) {
        surroundings.write("apps/"s + id + ".desktop", "[Desktop Entry]\nType=Application\n"s + lines + "\n");
    }
    DesktopEntries entries({surroundings.path() / "apps"}, "");
    for (const Case& each : cases) {
        const auto found = resolveApplication(each.window, entries, [&each](pid_t) { return each.process; });
        EXPECT_EQ(found ? *found->bundleIdentifier : "", each.id) << each.what;
    }
}

TEST(Processes, AreReadFromTheSystem) {
    const Surroundings surroundings;
    const auto program = surroundings.path() / "my program";
    std::filesystem::copy_file("/bin/sleep", program);
    QProcess child;
    child.start(QString::fromStdString(program), {QStringLiteral("60")});
    ASSERT_TRUE(child.waitForStarted());
    std::filesystem::remove(program); // as an update replaces what runs
    EXPECT_TRUE(waitUntil([&] {
        const auto process = readProcess(static_cast<pid_t>(child.processId()));
        return process && process->executable == program &&
               process->arguments == std::vector<std::string>{program, "60"};
    }));
    child.kill();
    child.waitForFinished();
    EXPECT_EQ(readProcess(elsewhere), std::nullopt);
}

} // namespace
} // namespace fernhollow::tests
