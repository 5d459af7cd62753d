// Presses a key at an exact rate. It shows a window that has the keyboard, because the server records
// nothing while no window has it, and prints a line once it has. Then, for each line "COUNT PER_SECOND"
// on the standard input, it makes the presses and prints a line after the last one.

#include <xcb/xcb.h>
#include <xcb/xtest.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <poll.h>
#include <string_view>

namespace {

template<class T>
using Reply = std::unique_ptr<T, decltype(&std::free)>;

constexpr std::uint8_t keyCode = 38; // a letter on every usual keyboard

xcb_window_t showWindow(xcb_connection_t* connection, xcb_window_t root) {
    const xcb_window_t window = xcb_generate_id(connection);
    const std::uint32_t events = XCB_EVENT_MASK_FOCUS_CHANGE;
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, root, 0, 0, 300, 200, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
    constexpr std::string_view names("typist\0Typist\0", 14);
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8,
                        static_cast<std::uint32_t>(names.size()), names.data());
    xcb_map_window(connection, window);
    xcb_flush(connection);
    return window;
}

bool waitForKeyboard(xcb_connection_t* connection) {
    pollfd ready{xcb_get_file_descriptor(connection), POLLIN, 0};
    constexpr int patience = 10'000;
    do {
        while (const Reply<xcb_generic_event_t> event{xcb_poll_for_event(connection), &std::free}) {
            if ((event->response_type & 0x7f) == XCB_FOCUS_IN) {
                return true;
            }
        }
    } while (::poll(&ready, 1, patience) > 0);
    return false;
}

void synchronize(xcb_connection_t* connection) {
    const Reply<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr), &std::free);
}

void press(xcb_connection_t* connection, xcb_window_t root, long count, long perSecond) {
    timespec next{};
    clock_gettime(CLOCK_MONOTONIC, &next);
    for (; count > 0; --count) {
        xcb_test_fake_input(connection, XCB_KEY_PRESS, keyCode, XCB_CURRENT_TIME, root, 0, 0, 0);
        xcb_test_fake_input(connection, XCB_KEY_RELEASE, keyCode, XCB_CURRENT_TIME, root, 0, 0, 0);
        synchronize(connection);
        next.tv_nsec += 1'000'000'000 / perSecond;
        if (next.tv_nsec >= 1'000'000'000) {
            next.tv_nsec -= 1'000'000'000;
            ++next.tv_sec;
        }
        clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &next, nullptr);
    }
}

void say(const char* line) {
    std::puts(line);
    std::fflush(stdout);
}

} // namespace

int main() {
    const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection(
        xcb_connect(nullptr, nullptr), &xcb_disconnect);
    if (xcb_connection_has_error(connection.get()) != 0) {
        return EXIT_FAILURE;
    }
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection.get())).data->root;
    showWindow(connection.get(), root);
    if (!waitForKeyboard(connection.get())) {
        std::fputs("the window did not get the keyboard\n", stderr);
        return EXIT_FAILURE;
    }
    say("ready");
    char line[64] = {};
    while (std::fgets(line, sizeof(line), stdin) != nullptr) {
        char* rest = nullptr;
        const long count = std::strtol(line, &rest, 10);
        const long perSecond = std::strtol(rest, nullptr, 10);
        if (perSecond < 1) {
            return EXIT_FAILURE;
        }
        press(connection.get(), root, count, perSecond);
        say("done");
    }
    return EXIT_SUCCESS;
}
