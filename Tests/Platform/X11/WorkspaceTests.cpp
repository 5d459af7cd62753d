#include "Platform/Surroundings.h"
#include "Platform/X11/X11Desktop.h"
#include "Platform/X11/X11Workspace.h"
#include "Platform/X11/XClient.h"
#include "Support/ApplicationIdentity.h"
#include "Support/VirtualDisplay.h"

#include <gmock/gmock.h>

#include <array>
#include <cstdint>
#include <unistd.h>

namespace fernhollow::tests {
namespace {

class Frontmost : public testing::Test {
protected:
    Frontmost() {
        surroundings.set("DISPLAY", display.name());
        surroundings.write(
            "apps/debian-xterm.desktop",
            "[Desktop Entry]\nType=Application\nName=XTerm\nName[de]=Konsole\nStartupWMClass=XTerm\n");
    }

    // Events travel to us on another connection than the desktop's own.
    testing::AssertionResult becomes(const std::optional<std::string>& id) {
        const auto now = [this] {
            const auto application = workspace.frontmostApplication();
            return application ? application->bundleIdentifier : std::nullopt;
        };
        return waitUntil([&] { return now() == id; }) ? testing::AssertionSuccess()
                                                      : testing::AssertionFailure() << now().value_or("none");
    }

    Surroundings surroundings;
    VirtualDisplay display;
    XClient desktop{display.name()};
    X11Workspace workspace{DesktopEntries({surroundings.path() / "apps"}, "de_DE.UTF-8")};
};

TEST_F(Frontmost, FollowsTheActiveWindowAndWhatItSays) {
    const xcb_window_t terminal = desktop.makeWindow("XTerm");
    const xcb_window_t other = desktop.makeWindow("Other");
    desktop.activate(terminal);
    EXPECT_TRUE(becomes("debian-xterm"));
    EXPECT_EQ(workspace.frontmostApplication()->localizedName, "Konsole");
    for (const xcb_window_t nobodys : {xcb_window_t{XCB_WINDOW_NONE}, desktop.root(), 0x7fffffU}) {
        desktop.activate(other);
        EXPECT_TRUE(becomes("Other"));
        desktop.activate(nobodys);
        EXPECT_TRUE(becomes(std::nullopt));
    }
    const xcb_window_t late = desktop.makeWindow();
    desktop.activate(late);
    EXPECT_TRUE(becomes(std::nullopt));
    desktop.setClass(late, "Late");
    EXPECT_TRUE(becomes("Late"));
    desktop.set(late, "_GTK_APPLICATION_ID", "debian-xterm");
    EXPECT_TRUE(becomes("debian-xterm"));
}

TEST_F(Frontmost, IsOurselvesByOurProcessWhateverTheWindowSays) {
    std::array<char, 256> host{};
    ASSERT_EQ(::gethostname(host.data(), host.size() - 1), 0);
    const std::vector<std::pair<std::string, std::string>> machines{
        {host.data(), std::string(applicationIdentifier)},
        {"elsewhere.example", "debian-xterm"}}; // where the number is somebody else's
    for (const auto& [machine, id] : machines) {
        const xcb_window_t window = desktop.makeWindow("XTerm");
        desktop.set(window, "_GTK_APPLICATION_ID", "debian-xterm");
        desktop.set(window, "_NET_WM_PID", static_cast<std::uint32_t>(::getpid()));
        desktop.set(window, "WM_CLIENT_MACHINE", machine);
        desktop.activate(window);
        EXPECT_TRUE(becomes(id)) << machine;
    }
}

TEST_F(Frontmost, IsNotTakenForTheFormerOwnerOfAWindowThatVanished) {
    std::vector<xcb_window_t> numbers;
    for (const char* windowClass : {"First", "Second"}) {
        XClient client(display.name());
        numbers.push_back(client.makeWindow(windowClass));
        desktop.activate(numbers.back());
        EXPECT_TRUE(becomes(windowClass));
    }
    EXPECT_EQ(numbers[0], numbers[1]) << "the server numbers differently";
    EXPECT_TRUE(becomes(std::nullopt));
}

TEST_F(Frontmost, IsUnknownWithoutAWindowManagerThatTells) {
    const xcb_window_t window = desktop.makeWindow("Late");
    for (int press = 0; press < 10; ++press) {
        EXPECT_EQ(workspace.frontmostApplication(), std::nullopt);
    }
    EXPECT_EQ(surroundings.logged("window manager"), 1);
    desktop.activate(window);
    EXPECT_TRUE(becomes("Late")) << "a window manager that came up after us";
}

TEST_F(Frontmost, IsUnknownWhileThereIsNoServer) {
    desktop.activate(desktop.makeWindow("Before"));
    EXPECT_TRUE(becomes("Before"));
    display.kill();
    for (int press = 0; press < 10; ++press) {
        EXPECT_EQ(workspace.frontmostApplication(), std::nullopt);
    }
    const VirtualDisplay next;
    surroundings.set("DISPLAY", next.name());
    XClient nextDesktop(next.name());
    nextDesktop.activate(nextDesktop.makeWindow("Again"));
    EXPECT_TRUE(becomes("Again"));
    EXPECT_EQ(surroundings.logged("display does not answer"), 1);
}

} // namespace
} // namespace fernhollow::tests
