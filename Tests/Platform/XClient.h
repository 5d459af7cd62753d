#pragma once

#include "Platform/X11/XcbHandles.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace fernhollow::test {

/// Somebody else's program on the display: it has windows and the focus, takes the keyboard for itself,
/// plays the window manager, and presses keys through XTEST.
class XClient {
public:
    explicit XClient(const std::string& display);

    xcb_window_t makeWindow();
    void destroy(xcb_window_t window);
    void focus(xcb_window_t window);
    bool grabKeyboard(xcb_window_t window);

    void setText(xcb_window_t window, const char* property, std::string_view bytes);
    void setNumber(xcb_window_t window, const char* property, std::uint32_t number);
    void setClass(xcb_window_t window, std::string_view instance, std::string_view windowClass);
    void remove(xcb_window_t window, const char* property);
    /// As a window manager announces it.
    void activate(xcb_window_t window) { setNumber(root_, "_NET_ACTIVE_WINDOW", window); }

    /// The first key that has `symbol` on its first level.
    xcb_keycode_t key(xcb_keysym_t symbol);
    void down(xcb_keycode_t key);
    void up(xcb_keycode_t key);
    /// Down and up, at the rate of a very fast typist.
    void type(xcb_keycode_t key, int times = 1);
    void remap(xcb_keycode_t key, xcb_keysym_t symbol);
    void sync();

    xcb_window_t root() const { return root_; }
    xcb_connection_t* connection() const { return connection_.get(); }

private:
    xcb_atom_t atom(const char* name);

    XcbConnection connection_;
    xcb_window_t root_;
};

} // namespace fernhollow::test
