#include "Platform/X11/ModifierKeys.h"

#include "Platform/X11/XcbHandles.h"

#include <algorithm>
#include <cstddef>

namespace fernhollow {
namespace {

// The ranges of X11/keysymdef.h that Xlib's IsModifierKey() names.
bool isModifierSymbol(xcb_keysym_t symbol) {
    constexpr xcb_keysym_t isoLock = 0xfe01;
    constexpr xcb_keysym_t isoLevel5Lock = 0xfe13;
    constexpr xcb_keysym_t modeSwitch = 0xff7e;
    constexpr xcb_keysym_t numLock = 0xff7f;
    constexpr xcb_keysym_t shiftL = 0xffe1;
    constexpr xcb_keysym_t hyperR = 0xffee;
    return (symbol >= shiftL && symbol <= hyperR) || (symbol >= isoLock && symbol <= isoLevel5Lock) ||
           symbol == modeSwitch || symbol == numLock;
}

} // namespace

std::optional<ModifierKeys> ModifierKeys::read(xcb_connection_t* connection) {
    const xcb_setup_t* setup = xcb_get_setup(connection);
    const xcb_keycode_t first = setup->min_keycode;
    const auto count = static_cast<std::uint8_t>(setup->max_keycode - first + 1);
    const auto mapCookie = xcb_get_modifier_mapping(connection);
    const auto symbolsCookie = xcb_get_keyboard_mapping(connection, first, count);
    const XcbReply<xcb_get_modifier_mapping_reply_t> map(
        xcb_get_modifier_mapping_reply(connection, mapCookie, nullptr));
    const XcbReply<xcb_get_keyboard_mapping_reply_t> symbols(
        xcb_get_keyboard_mapping_reply(connection, symbolsCookie, nullptr));
    if (!map || !symbols) {
        return std::nullopt;
    }

    ModifierKeys result;
    const xcb_keycode_t* mapped = xcb_get_modifier_mapping_keycodes(map.get());
    for (int index = 0; index < xcb_get_modifier_mapping_keycodes_length(map.get()); ++index) {
        result.keys_.set(mapped[index]);
    }
    result.keys_.reset(0); // 0 stands in unused places of the map

    const xcb_keysym_t* symbol = xcb_get_keyboard_mapping_keysyms(symbols.get());
    const xcb_keysym_t* const end = symbol + xcb_get_keyboard_mapping_keysyms_length(symbols.get());
    for (std::size_t key = first; symbol < end && key < result.keys_.size(); ++key) {
        result.keys_[key] = result.keys_[key] || isModifierSymbol(*symbol);
        symbol += std::max<std::ptrdiff_t>(symbols->keysyms_per_keycode, 1);
    }
    return result;
}

} // namespace fernhollow
