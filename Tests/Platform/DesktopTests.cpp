#include "Platform/Desktop.h"
#include "Platform/Surroundings.h"
#include "Platform/Workspace.h"
#include "Support/VirtualDisplay.h"

#include <gmock/gmock.h>

namespace fernhollow::tests {
namespace {

TEST(Sessions, AreToldApartByTheEnvironment) {
    struct Case {
        const char* type;
        const char* wayland;
        const char* display;
        const char* desktop;
        Session session;
    };
    const std::vector<Case> cases{{"", "", "", "", Session::none},
                                  {"x11", "", ":0", "KDE", Session::x11},
                                  {"tty", "", "", "GNOME", Session::none},
                                  {"wayland", "", ":0", "KDE", Session::kwin},
                                  {"", "wayland-0", "", "ubuntu:GNOME", Session::gnome},
                                  {"wayland", "wayland-0", ":0", "GNOME-Classic:GNOME", Session::gnome},
                                  {"wayland", "wayland-1", ":0", "sway", Session::wlroots},
                                  {"wayland", "wayland-1", "", "", Session::wlroots}};
    Surroundings surroundings;
    for (const Case& each : cases) {
        surroundings.set("XDG_SESSION_TYPE", each.type);
        surroundings.set("WAYLAND_DISPLAY", each.wayland);
        surroundings.set("DISPLAY", each.display);
        surroundings.set("XDG_CURRENT_DESKTOP", each.desktop);
        EXPECT_EQ(currentSession(), each.session) << each.type << ' ' << each.wayland << ' ' << each.desktop;
    }
}

TEST(WaylandSessions, AreNotCountedInEvenWithAnXServer) {
    Surroundings surroundings;
    const VirtualDisplay display;
    surroundings.set("DISPLAY", display.name());
    for (const Session session : {Session::kwin, Session::gnome, Session::wlroots}) {
        std::string shown;
        const Desktop desktop(session);
        const auto provider =
            desktop.makeEventTapProvider([&](const TrustProblem& problem) { shown += problem.missing; });
        EXPECT_FALSE(provider->isProcessTrusted(false));
        EXPECT_EQ(shown, "");
        EXPECT_FALSE(provider->isProcessTrusted(true));
        EXPECT_THAT(shown, testing::HasSubstr("Wayland"));
        EXPECT_EQ(provider->createTap([](TapEvent) {}), nullptr);
        EXPECT_EQ(desktop.makeWorkspace()->frontmostApplication(), std::nullopt);
    }
    EXPECT_EQ(surroundings.logged("Wayland"), 3) << "each provider says it once";
}

} // namespace
} // namespace fernhollow::tests
