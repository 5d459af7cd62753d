#include "Platform/Desktop.h"
#include "Platform/Surroundings.h"
#include "Platform/Wayland/KeytapConnection.h"
#include "Platform/Wayland/WaylandEventTapProvider.h"
#include "Platform/Workspace.h"
#include "Support/EventLoop.h"
#include "Support/VirtualDisplay.h"

#include <QTemporaryDir>
#include <gmock/gmock.h>

#include <algorithm>
#include <sys/socket.h>
#include <sys/un.h>

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

/// A key-blind service with one connection at most.
class Service {
public:
    Service() : listener_(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
        sockaddr_un address{AF_UNIX, {}};
        std::ranges::copy(path(), address.sun_path);
        const auto* name = reinterpret_cast<const sockaddr*>(&address);
        EXPECT_EQ(::bind(listener_.get(), name, sizeof address), 0);
        EXPECT_EQ(::listen(listener_.get(), 1), 0);
    }

    std::string path() const { return folder_.filePath(QStringLiteral("socket")).toStdString(); }

    template<typename Value>
    void send(Value value) {
        if (!peer_) {
            peer_ = FileDescriptor(::accept(listener_.get(), nullptr, nullptr));
        }
        ASSERT_EQ(::send(peer_.get(), &value, sizeof value, 0), sizeof value);
    }

private:
    QTemporaryDir folder_;
    FileDescriptor listener_;
    FileDescriptor peer_;
};

TEST(WaylandSessions, AreCountedInOnlyThroughTheKeyBlindService) {
    Surroundings surroundings;
    const VirtualDisplay display; // an X server sees a part of the presses alone
    surroundings.set("DISPLAY", display.name());
    surroundings.set("WAYLAND_DISPLAY", "none-such");
    std::vector<std::string> shown;
    const auto prompt = [&](const TrustProblem& problem) { shown.push_back(problem.missing); };
    WaylandEventTapProvider without(prompt, std::make_shared<KeytapConnection>("/none/such"));
    EXPECT_FALSE(without.isProcessTrusted(false));
    EXPECT_THAT(shown, testing::IsEmpty());
    EXPECT_FALSE(without.isProcessTrusted(true));
    EXPECT_FALSE(without.isProcessTrusted(false));
    EXPECT_THAT(shown, testing::ElementsAre(testing::HasSubstr("Wayland session")));
    EXPECT_EQ(without.createTap([](TapEvent) {}), nullptr);
    EXPECT_EQ(surroundings.logged("Wayland session"), 1) << "said once";

    Service service;
    WaylandEventTapProvider provider(prompt, std::make_shared<KeytapConnection>(service.path()));
    EXPECT_TRUE(provider.isProcessTrusted(false));
    int presses = 0;
    int ends = 0;
    const auto tap =
        provider.createTap([&](TapEvent event) { ++(event == TapEvent::keyDown ? presses : ends); });
    tap->setEnabled(true);
    service.send(std::uint64_t{3});
    service.send(std::uint64_t{1} << 40); // cannot be
    service.send(std::uint64_t{2});
    service.send(keytap::Refusal::notUnderstood);
    EXPECT_TRUE(waitUntil([&] { return ends == 1; }));
    EXPECT_EQ(presses, 5);
    EXPECT_FALSE(provider.isProcessTrusted(false)) << "not before a pause";

    const Desktop desktop(Session::wlroots);
    EXPECT_EQ(desktop.makeWorkspace()->frontmostApplication(), std::nullopt) << "no compositor answers";
}

} // namespace
} // namespace fernhollow::tests
