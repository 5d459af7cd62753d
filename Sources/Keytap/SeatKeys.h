#pragma once

#include "Keytap/Time.h"

#include <cstdint>
#include <linux/input.h>
#include <optional>

namespace fernhollow::keytap {

/// True for a key whose going down is a press: not a modifier, and not a button of a mouse, pen or joystick.
bool isCounted(std::uint16_t code);

/// Turns the kernel's events at one seat into "pressed" and "released", and forgets which key it was.
///
/// It keeps a single code: that of the key that went down last, until that key comes up and stops
/// repeating. Owned by Devices, one for each seat that is read.
class SeatKeys {
public:
    enum class Change {
        none,
        pressed,  ///< a counted key went down; from now on this key repeats
        released, ///< the key that went down last came up; no key repeats
    };

    SeatKeys() = default;
    SeatKeys(const SeatKeys&) = delete;
    SeatKeys& operator=(const SeatKeys&) = delete;
    ~SeatKeys();

    /// What `event` of `device` means. Overwrites the event with zeros before it returns.
    Change take(int device, input_event& event);

    /// To be called when `device` is no longer read: a key that it holds counts as released.
    Change forget(int device);

private:
    Change release();

    int heldDevice_ = -1; // -1: no key is held
    std::uint16_t heldCode_ = 0;
};

} // namespace fernhollow::keytap
