#pragma once

#include "Platform/X11/XcbHandles.h"

#include <QThread>
#include <xcb/xtest.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace fernhollow::tests {

/// Somebody else's program on the display: it has windows and the focus, takes the keyboard for itself,
/// plays the window manager, and presses keys through XTEST.
class XClient {
public:
    explicit XClient(const std::string& display) : connection_(xcb_connect(display.c_str(), nullptr)) {}

    xcb_window_t root() const { return xcb_setup_roots_iterator(xcb_get_setup(x_)).data->root; }

    /// With the focus.
    xcb_window_t makeWindow(std::string_view windowClass = {}) {
        const xcb_window_t window = xcb_generate_id(x_);
        xcb_create_window(x_, XCB_COPY_FROM_PARENT, window, root(), 0, 0, 100, 100, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
        xcb_map_window(x_, window);
        if (!windowClass.empty()) {
            setClass(window, windowClass);
        }
        xcb_set_input_focus(x_, XCB_INPUT_FOCUS_POINTER_ROOT, window, XCB_CURRENT_TIME);
        sync();
        return window;
    }
    bool grabKeyboard(xcb_window_t window) {
        const auto cookie =
            xcb_grab_keyboard(x_, 0, window, XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
        const XcbReply<xcb_grab_keyboard_reply_t> reply(xcb_grab_keyboard_reply(x_, cookie, nullptr));
        return reply && reply->status == XCB_GRAB_STATUS_SUCCESS;
    }

    void set(xcb_window_t window, std::string_view property, std::string_view bytes) {
        change(window, property, XCB_ATOM_STRING, 8, bytes.size(), bytes.data());
    }
    void set(xcb_window_t window, std::string_view property, std::uint32_t number) {
        change(window, property, XCB_ATOM_CARDINAL, 32, 1, &number);
    }
    void setClass(xcb_window_t window, std::string_view windowClass) {
        set(window, "WM_CLASS", std::string("instance\0", 9).append(windowClass) + '\0');
    }
    /// As a window manager announces it.
    void activate(xcb_window_t window) { set(root(), "_NET_ACTIVE_WINDOW", window); }

    void down(xcb_keycode_t key) { fake(XCB_KEY_PRESS, key); }
    void up(xcb_keycode_t key) { fake(XCB_KEY_RELEASE, key); }
    /// Down and up, at the rate of a very fast typist.
    void type(xcb_keycode_t key, int times = 1) {
        for (int time = 0; time < times; ++time) {
            down(key);
            up(key);
            QThread::usleep(1'000);
        }
    }
    void remap(xcb_keycode_t key, xcb_keysym_t symbol) {
        xcb_change_keyboard_mapping(x_, 1, key, 1, &symbol);
        sync();
    }

private:
    void fake(std::uint8_t event, xcb_keycode_t key) {
        xcb_test_fake_input(x_, event, key, XCB_CURRENT_TIME, root(), 0, 0, 0);
        sync();
    }
    void change(xcb_window_t window, std::string_view property, xcb_atom_t type, std::uint8_t format,
                std::size_t count, const void* data) {
        const auto cookie =
            xcb_intern_atom(x_, 0, static_cast<std::uint16_t>(property.size()), property.data());
        const XcbReply<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(x_, cookie, nullptr));
        xcb_change_property(x_, XCB_PROP_MODE_REPLACE, window, atom->atom, type, format,
                            static_cast<std::uint32_t>(count), data);
        sync();
    }
    void sync() { std::free(xcb_get_input_focus_reply(x_, xcb_get_input_focus(x_), nullptr)); }

    XcbConnection connection_;
    xcb_connection_t* const x_ = connection_.get();
};

} // namespace fernhollow::tests
