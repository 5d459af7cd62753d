#pragma once

#include <xcb/xcb.h>

#include <bitset>
#include <cstdint>
#include <optional>

namespace fernhollow {

/// The keys that only change what other keys mean, as one keyboard map has them.
///
/// That is every key in the server's modifier map, and every key whose first symbol is a modifier: the
/// AltGr of many layouts acts through XKB alone and is absent from the modifier map.
class ModifierKeys {
public:
    /// The keys of the server's present map, in one round trip; nothing when it does not answer.
    static std::optional<ModifierKeys> read(xcb_connection_t* connection);

    bool contains(std::uint8_t keycode) const { return keys_.test(keycode); }

private:
    std::bitset<256> keys_;
};

} // namespace fernhollow
