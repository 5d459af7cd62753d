#include "Platform/Surroundings.h"
#include "Platform/X11/StartupNotification.h"
#include "Platform/X11/XcbHandles.h"
#include "Support/VirtualDisplay.h"

#include <gmock/gmock.h>

namespace fernhollow::tests {
namespace {

TEST(StartupIds, TellWhenThePersonActed) {
    using Time = std::optional<std::uint32_t>;
    const std::vector<std::pair<const char*, Time>> cases{
        {"panel/fernhollow/7-0-host_TIME4294967295", 4294967295U},
        {"a_TIME1_TIME23", 23U},
        {"a_TIME4294967296", {}},
        {"a_TIME", {}},
        {"a_TIME1x", {}},
        {"5f1d8c0e-0001", {}},
        {"", {}}};
    for (const auto& [id, time] : cases) {
        EXPECT_EQ(startupTime(id), time) << id;
    }
}

TEST(StartupNotifications, ReachTheWindowManagerAndTheLauncher) {
    Surroundings surroundings;
    const VirtualDisplay display;
    surroundings.set("DISPLAY", display.name());
    const XcbConnection manager = connectToDisplay();
    const xcb_window_t root = rootWindow(manager.get());
    const std::uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(manager.get(), root, XCB_CW_EVENT_MASK, &mask);
    std::free(xcb_get_input_focus_reply(manager.get(), xcb_get_input_focus(manager.get()), nullptr));

    constexpr xcb_window_t window = 0x123456;
    const XcbConnection program = connectToDisplay();
    requestActivation(program.get(), root, window, 42);
    announceStarted(program.get(), root, window, R"(panel "7"_TIME42)");

    const auto next = [&] { return XcbReply<xcb_generic_event_t>(xcb_wait_for_event(manager.get())); };
    const auto request = next();
    const auto& activation = reinterpret_cast<const xcb_client_message_event_t&>(*request);
    EXPECT_EQ(activation.type, internAtom(manager.get(), "_NET_ACTIVE_WINDOW"));
    EXPECT_EQ(activation.window, window);
    EXPECT_EQ(activation.data.data32[1], 42U);
    std::string text;
    while (text.find('\0') == std::string::npos) {
        const auto event = next();
        const auto& part = reinterpret_cast<const xcb_client_message_event_t&>(*event);
        EXPECT_EQ(part.type,
                  internAtom(manager.get(), text.empty() ? "_NET_STARTUP_INFO_BEGIN" : "_NET_STARTUP_INFO"));
        text.append(reinterpret_cast<const char*>(part.data.data8), sizeof part.data.data8);
    }
    EXPECT_STREQ(text.c_str(), R"(remove: ID="panel \"7\"_TIME42")");
}

} // namespace
} // namespace fernhollow::tests
