#pragma once

#include <xcb/xcb.h>

#include <bitset>
#include <cstdint>
#include <optional>

namespace fernhollow {

/// The modifier keys of one keyboard map.
///
/// These are the keys in the server's modifier map and the keys whose first symbol is a modifier: the
/// AltGr of many layouts works through XKB alone and is not in the modifier map.
class ModifierKeys {
public:
    /// Reads the server's present map, in one round trip; nothing when the server does not answer.
    static std::optional<ModifierKeys> read(xcb_connection_t* connection);

    bool contains(std::uint8_t keycode) const { return keys_.test(keycode); }

private:
    std::bitset<256> keys_;
};

} // namespace fernhollow
