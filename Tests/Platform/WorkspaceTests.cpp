#include "Platform/Surroundings.h"
#include "Platform/X11/X11Workspace.h"
#include "Platform/XClient.h"
#include "Support/ApplicationIdentity.h"
#include "Support/VirtualDisplay.h"

#include <gmock/gmock.h>

#include <array>
#include <unistd.h>

namespace fernhollow::test {
namespace {

class Frontmost : public ::testing::Test {
protected:
    Frontmost() {
        surroundings.set("DISPLAY", display.name());
        surroundings.write(
            "apps/debian-xterm.desktop",
            "[Desktop Entry]\nType=Application\nName=XTerm\nName[de]=Konsole\nStartupWMClass=XTerm\n");
    }

    xcb_window_t makeWindow(std::string_view instance, std::string_view windowClass) {
        const xcb_window_t window = desktop.makeWindow();
        desktop.setClass(window, instance, windowClass);
        return window;
    }

    // Events travel to us on another connection than the desktop's own.
    testing::AssertionResult becomes(const std::optional<std::string>& id) {
        const auto now = [this] {
            const auto application = workspace.frontmostApplication();
            return application ? application->bundleIdentifier : std::nullopt;
        };
        return eventually([&] { return now() == id; })
                   ? testing::AssertionSuccess()
                   : testing::AssertionFailure() << now().value_or("none");
    }

    Surroundings surroundings;
    VirtualDisplay display;
    XClient desktop{display.name()};
    X11Workspace workspace{DesktopEntries({surroundings.home() / "apps"}, "de_DE.UTF-8")};
};

TEST_F(Frontmost, FollowsTheActiveWindow) {
    const xcb_window_t terminal = makeWindow("xterm", "XTerm");
    const xcb_window_t other = makeWindow("other", "Other");
    desktop.activate(terminal);
    EXPECT_TRUE(becomes("debian-xterm"));
    EXPECT_EQ(workspace.frontmostApplication()->localizedName, "Konsole");
    desktop.activate(other);
    EXPECT_TRUE(becomes("Other"));
    desktop.activate(XCB_WINDOW_NONE);
    EXPECT_TRUE(becomes(std::nullopt));
    desktop.activate(terminal);
    EXPECT_TRUE(becomes("debian-xterm"));
    desktop.activate(desktop.root());
    EXPECT_TRUE(becomes(std::nullopt));
    desktop.activate(other);
    EXPECT_TRUE(becomes("Other"));
}

TEST_F(Frontmost, FollowsAWindowThatChangesItsMind) {
    const xcb_window_t window = desktop.makeWindow();
    desktop.activate(window);
    EXPECT_TRUE(becomes(std::nullopt));
    desktop.setClass(window, "late", "Late");
    EXPECT_TRUE(becomes("Late"));
    desktop.setText(window, "_GTK_APPLICATION_ID", "debian-xterm");
    EXPECT_TRUE(becomes("debian-xterm"));
}

TEST_F(Frontmost, IsOurselvesByOurProcessWhateverTheWindowSays) {
    std::array<char, 256> host{};
    ASSERT_EQ(::gethostname(host.data(), host.size() - 1), 0);
    const xcb_window_t window = makeWindow("xterm", "XTerm");
    desktop.setNumber(window, "_NET_WM_PID", static_cast<std::uint32_t>(::getpid()));
    desktop.setText(window, "WM_CLIENT_MACHINE", host.data());
    desktop.activate(window);
    EXPECT_TRUE(becomes(std::string(applicationIdentifier)));
    EXPECT_EQ(workspace.frontmostApplication()->localizedName, applicationName);

    // The same number on another machine is somebody else.
    const xcb_window_t remote = makeWindow("xterm", "XTerm");
    desktop.setNumber(remote, "_NET_WM_PID", static_cast<std::uint32_t>(::getpid()));
    desktop.setText(remote, "WM_CLIENT_MACHINE", "elsewhere.example");
    desktop.activate(remote);
    EXPECT_TRUE(becomes("debian-xterm"));
}

TEST_F(Frontmost, IsNobodyForAWindowThatVanished) {
    const xcb_window_t window = makeWindow("xterm", "XTerm");
    desktop.activate(window);
    EXPECT_TRUE(becomes("debian-xterm"));
    desktop.destroy(window);
    EXPECT_TRUE(becomes(std::nullopt));
    desktop.activate(0x7fffff);
    EXPECT_TRUE(becomes(std::nullopt));
    desktop.activate(makeWindow("other", "Other"));
    EXPECT_TRUE(becomes("Other"));
}

TEST_F(Frontmost, IsNotTakenForTheFormerOwnerOfAWindowsNumber) {
    xcb_window_t number = XCB_WINDOW_NONE;
    for (const char* windowClass : {"First", "Second"}) {
        std::optional<XClient> client(display.name());
        const xcb_window_t window = client->makeWindow();
        EXPECT_TRUE(number == XCB_WINDOW_NONE || number == window) << "the server numbers differently";
        number = window;
        client->setClass(window, "x", windowClass);
        desktop.activate(window);
        EXPECT_TRUE(becomes(windowClass));
        client.reset();
        desktop.sync();
    }
}

TEST_F(Frontmost, SurvivesOddClasses) {
    const xcb_window_t window = desktop.makeWindow();
    desktop.activate(window);
    struct Case {
        std::string wmClass;
        std::optional<std::string> id;
    };
    using namespace std::string_literals;
    const std::vector<Case> cases{
        {"x\0"s + std::string(10'000, 'y') + "\0"s, std::string(255, 'y')},
        {std::string(10'000, 'x') + "\0Class\0"s, "Class"},
        {std::string(30'000, 'x'), std::string(255, 'x')},
        {"instance\0\0"s, "instance"},
        {"\0\0"s, std::nullopt},
        {"\0Class"s, "Class"},
        {"", std::nullopt},
        {"one", "one"},
        {"x\0\xff\xfe\0"s, "ÿþ"},
        {"x\0Clas\0s\0"s, "Clas"},
    };
    for (const Case& each : cases) {
        desktop.setText(window, "WM_CLASS", each.wmClass);
        EXPECT_TRUE(becomes(each.id)) << each.wmClass.substr(0, 20);
    }
    desktop.setNumber(window, "WM_CLASS", 7);
    EXPECT_TRUE(becomes(std::nullopt)) << "not a text";
    desktop.setText(window, "_NET_WM_PID", "12");
    desktop.setClass(window, "x", "Fine");
    EXPECT_TRUE(becomes("Fine")) << "a process id that is not a number";
    desktop.setText(desktop.root(), "_NET_ACTIVE_WINDOW", "text");
    EXPECT_TRUE(becomes(std::nullopt));
}

TEST_F(Frontmost, IsUnknownWithoutAWindowManagerThatTells) {
    makeWindow("xterm", "XTerm");
    for (int press = 0; press < 10; ++press) {
        EXPECT_EQ(workspace.frontmostApplication(), std::nullopt);
    }
    EXPECT_EQ(surroundings.logged("window manager"), 1);
    desktop.activate(makeWindow("late", "Late"));
    EXPECT_TRUE(becomes("Late")) << "a window manager that came up after us";
    desktop.remove(desktop.root(), "_NET_ACTIVE_WINDOW");
    EXPECT_TRUE(becomes(std::nullopt));
    EXPECT_EQ(surroundings.logged("window manager"), 1);
}

TEST_F(Frontmost, IsUnknownWhileThereIsNoServer) {
    desktop.activate(makeWindow("xterm", "XTerm"));
    EXPECT_TRUE(becomes("debian-xterm"));
    display.kill();
    EXPECT_TRUE(becomes(std::nullopt));
    for (int press = 0; press < 100; ++press) {
        EXPECT_EQ(workspace.frontmostApplication(), std::nullopt);
    }
    EXPECT_EQ(surroundings.logged("display does not answer"), 1);

    const VirtualDisplay next;
    surroundings.set("DISPLAY", next.name());
    XClient nextDesktop(next.name());
    const xcb_window_t window = nextDesktop.makeWindow();
    nextDesktop.setClass(window, "again", "Again");
    nextDesktop.activate(window);
    EXPECT_TRUE(becomes("Again"));
}

TEST(NoDisplay, KnowsNoApplication) {
    const Surroundings surroundings;
    const auto workspace = makeWorkspace();
    EXPECT_EQ(workspace->frontmostApplication(), std::nullopt);
    EXPECT_EQ(workspace->frontmostApplication(), std::nullopt);
    EXPECT_EQ(surroundings.logged("[Workspace]"), 1);
}

} // namespace
} // namespace fernhollow::test
