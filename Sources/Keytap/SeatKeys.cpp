#include "Keytap/SeatKeys.h"

#include <string.h> // explicit_bzero

namespace fernhollow::keytap {

bool isCounted(std::uint16_t code) {
    switch (code) {
    case KEY_RESERVED:
    case KEY_LEFTCTRL:
    case KEY_RIGHTCTRL:
    case KEY_LEFTSHIFT:
    case KEY_RIGHTSHIFT:
    case KEY_LEFTALT:
    case KEY_RIGHTALT:
    case KEY_LEFTMETA:
    case KEY_RIGHTMETA:
    case KEY_CAPSLOCK:
    case KEY_NUMLOCK:
    case KEY_FN:
        return false;
    default:
        break;
    }
    // The codes of buttons are in three ranges among those of keys.
    const bool isButton = (code >= BTN_MISC && code < KEY_OK) ||
                          (code >= BTN_DPAD_UP && code <= BTN_DPAD_RIGHT) ||
                          (code >= BTN_TRIGGER_HAPPY && code <= BTN_TRIGGER_HAPPY40);
    return code < KEY_CNT && !isButton;
}

SeatKeys::~SeatKeys() {
    release();
}

SeatKeys::Change SeatKeys::take(int device, input_event& event) {
    enum : std::int32_t { up = 0, down = 1 }; // 2 is the kernel's own repeat, which no desktop passes on
    auto change = Change::none;
    if (event.type == EV_KEY && event.value == down && isCounted(event.code)) {
        heldDevice_ = device;
        heldCode_ = event.code;
        change = Change::pressed;
    } else if (event.type == EV_KEY && event.value == up && device == heldDevice_ &&
               event.code == heldCode_) {
        change = release();
    } else if (event.type == EV_SYN && event.code == SYN_DROPPED) {
        change = forget(device); // The key-up may be among the events that the kernel had no room for.
    }
    explicit_bzero(&event, sizeof event);
    return change;
}

SeatKeys::Change SeatKeys::forget(int device) {
    return device == heldDevice_ ? release() : Change::none;
}

SeatKeys::Change SeatKeys::release() {
    const auto change = heldDevice_ < 0 ? Change::none : Change::released;
    explicit_bzero(&heldCode_, sizeof heldCode_);
    heldDevice_ = -1;
    return change;
}

} // namespace fernhollow::keytap
