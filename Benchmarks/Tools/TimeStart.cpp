// Prints how many milliseconds a program takes from its start to its request for a place in the tray.
// TimeStart is the tray. Arguments: the program and its arguments. It ends the program afterwards.

#include <xcb/xcb.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <poll.h>
#include <spawn.h>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

template<class T>
using Reply = std::unique_ptr<T, decltype(&std::free)>;

xcb_atom_t atom(xcb_connection_t* connection, std::string_view name) {
    const auto cookie = xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
    const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection, cookie, nullptr),
                                               &std::free);
    return reply ? reply->atom : XCB_ATOM_NONE;
}

bool becomeTray(xcb_connection_t* connection) {
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    const xcb_window_t window = xcb_generate_id(connection);
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, screen->root, 0, 0, 32, 32, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    const xcb_atom_t selection = atom(connection, "_NET_SYSTEM_TRAY_S0");
    xcb_set_selection_owner(connection, window, selection, XCB_CURRENT_TIME);
    const Reply<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, selection), nullptr),
        &std::free);
    return owner && owner->owner == window;
}

bool waitForDocking(xcb_connection_t* connection, xcb_atom_t opcode) {
    constexpr std::uint32_t requestDock = 0;
    constexpr int patience = 20'000;
    pollfd ready{xcb_get_file_descriptor(connection), POLLIN, 0};
    do {
        while (const Reply<xcb_generic_event_t> event{xcb_poll_for_event(connection), &std::free}) {
            const auto* message = reinterpret_cast<const xcb_client_message_event_t*>(event.get());
            if ((event->response_type & 0x7f) == XCB_CLIENT_MESSAGE && message->type == opcode &&
                message->data.data32[1] == requestDock) {
                return true;
            }
        }
    } while (::poll(&ready, 1, patience) > 0);
    return false;
}

} // namespace

int main(int argc, char** argv) {
    const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection(
        xcb_connect(nullptr, nullptr), &xcb_disconnect);
    if (argc < 2 || xcb_connection_has_error(connection.get()) != 0 || !becomeTray(connection.get())) {
        std::fputs("there is no display, or it has a tray already\n", stderr);
        return EXIT_FAILURE;
    }
    const xcb_atom_t opcode = atom(connection.get(), "_NET_SYSTEM_TRAY_OPCODE");

    const auto started = Clock::now();
    pid_t child = 0;
    if (::posix_spawn(&child, argv[1], nullptr, nullptr, argv + 1, environ) != 0) {
        std::perror(argv[1]);
        return EXIT_FAILURE;
    }
    const bool docked = waitForDocking(connection.get(), opcode);
    const std::chrono::duration<double, std::milli> passed = Clock::now() - started;
    ::kill(child, SIGTERM);
    ::waitpid(child, nullptr, 0);
    if (!docked) {
        return EXIT_FAILURE;
    }
    std::printf("%.3f\n", passed.count());
    return EXIT_SUCCESS;
}
