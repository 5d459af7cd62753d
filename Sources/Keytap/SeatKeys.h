#pragma once

#include "Keytap/Time.h"

#include <cstdint>
#include <linux/input.h>
#include <optional>

namespace fernhollow::keytap {

/// True for a key whose going down is a press: not a modifier, and not a button of a mouse, pen or joystick.
bool isCounted(std::uint16_t code);

/// Turns the kernel's events of one seat into "pressed" and "released", and forgets which key it was.
///
/// It keeps a single code: that of the key that went down last, until this key goes up, because only then
/// does it stop to repeat. Owned by Devices, one for each seat that is read.
class SeatKeys {
public:
    enum class Change {
        none,
        pressed,  ///< a counted key went down, and from now on it is this key that repeats
        released, ///< the key that went down last is up; nothing repeats
    };

    SeatKeys() = default;
    SeatKeys(const SeatKeys&) = delete;
    SeatKeys& operator=(const SeatKeys&) = delete;
    ~SeatKeys();

    /// What `event` of `device` means. Overwrites the event with zeros.
    Change take(int device, input_event& event);

    /// The device is not read any more.
    Change forget(int device);

private:
    Change release();

    int heldDevice_ = -1; // -1: no key is held
    std::uint16_t heldCode_ = 0;
};

} // namespace fernhollow::keytap
