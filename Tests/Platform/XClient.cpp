#include "Platform/XClient.h"

#include <QThread>
#include <xcb/xtest.h>

#include <cstring>
#include <stdexcept>

namespace fernhollow::test {

XClient::XClient(const std::string& display) : connection_(xcb_connect(display.c_str(), nullptr)) {
    if (xcb_connection_has_error(connection_.get()) != 0) {
        throw std::runtime_error("no connection to " + display);
    }
    root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_.get())).data->root;
}

xcb_window_t XClient::makeWindow() {
    const xcb_window_t window = xcb_generate_id(connection());
    xcb_create_window(connection(), XCB_COPY_FROM_PARENT, window, root_, 0, 0, 100, 100, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    xcb_map_window(connection(), window);
    sync();
    return window;
}

void XClient::destroy(xcb_window_t window) {
    xcb_destroy_window(connection(), window);
    sync();
}

void XClient::focus(xcb_window_t window) {
    xcb_set_input_focus(connection(), XCB_INPUT_FOCUS_POINTER_ROOT, window, XCB_CURRENT_TIME);
    sync();
}

bool XClient::grabKeyboard(xcb_window_t window) {
    const XcbReply<xcb_grab_keyboard_reply_t> reply(
        xcb_grab_keyboard_reply(connection(),
                                xcb_grab_keyboard(connection(), 0, window, XCB_CURRENT_TIME,
                                                  XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC),
                                nullptr));
    return reply && reply->status == XCB_GRAB_STATUS_SUCCESS;
}

void XClient::setText(xcb_window_t window, const char* property, std::string_view bytes) {
    xcb_change_property(connection(), XCB_PROP_MODE_REPLACE, window, atom(property), XCB_ATOM_STRING, 8,
                        static_cast<std::uint32_t>(bytes.size()), bytes.data());
    sync();
}

void XClient::setNumber(xcb_window_t window, const char* property, std::uint32_t number) {
    xcb_change_property(connection(), XCB_PROP_MODE_REPLACE, window, atom(property), XCB_ATOM_CARDINAL, 32, 1,
                        &number);
    sync();
}

void XClient::setClass(xcb_window_t window, std::string_view instance, std::string_view windowClass) {
    std::string both(instance);
    both.push_back('\0');
    both.append(windowClass).push_back('\0');
    setText(window, "WM_CLASS", both);
}

void XClient::remove(xcb_window_t window, const char* property) {
    xcb_delete_property(connection(), window, atom(property));
    sync();
}

xcb_keycode_t XClient::key(xcb_keysym_t symbol) {
    const xcb_setup_t* setup = xcb_get_setup(connection());
    const int count = setup->max_keycode - setup->min_keycode + 1;
    const XcbReply<xcb_get_keyboard_mapping_reply_t> map(xcb_get_keyboard_mapping_reply(
        connection(),
        xcb_get_keyboard_mapping(connection(), setup->min_keycode, static_cast<std::uint8_t>(count)),
        nullptr));
    for (int index = 0; map && index < count; ++index) {
        if (xcb_get_keyboard_mapping_keysyms(map.get())[index * map->keysyms_per_keycode] == symbol) {
            return static_cast<xcb_keycode_t>(setup->min_keycode + index);
        }
    }
    throw std::runtime_error("no key has that symbol");
}

void XClient::down(xcb_keycode_t key) {
    xcb_test_fake_input(connection(), XCB_KEY_PRESS, key, XCB_CURRENT_TIME, root_, 0, 0, 0);
    sync();
}

void XClient::up(xcb_keycode_t key) {
    xcb_test_fake_input(connection(), XCB_KEY_RELEASE, key, XCB_CURRENT_TIME, root_, 0, 0, 0);
    sync();
}

void XClient::type(xcb_keycode_t key, int times) {
    for (int time = 0; time < times; ++time) {
        down(key);
        up(key);
        QThread::usleep(1'000);
    }
}

void XClient::remap(xcb_keycode_t key, xcb_keysym_t symbol) {
    xcb_change_keyboard_mapping(connection(), 1, key, 1, &symbol);
    sync();
}

void XClient::sync() {
    std::free(xcb_get_input_focus_reply(connection(), xcb_get_input_focus(connection()), nullptr));
}

xcb_atom_t XClient::atom(const char* name) {
    const XcbReply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        connection(), xcb_intern_atom(connection(), 0, static_cast<std::uint16_t>(std::strlen(name)), name),
        nullptr));
    return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

} // namespace fernhollow::test
