#include "Keytap/SeatKeys.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <ostream>
#include <string>
#include <vector>

namespace fernhollow::keytap {
namespace {

struct Event {
    int device;
    int code;
    int value; // 1 down, 0 up, 2 the kernel's repeat
    int type = EV_KEY;
};

/// Events as keyboards send them, and what is to be heard of them: P a press, r the release of the held key.
struct Recording {
    const char* name;
    std::vector<Event> events;
    std::string heard;

    friend std::ostream& operator<<(std::ostream& out, const Recording& recording) {
        return out << recording.name;
    }
};

class SeatKeysTest : public testing::TestWithParam<Recording> {};

TEST_P(SeatKeysTest, HearsPressesAndForgetsTheKey) {
    SeatKeys keys;
    std::string heard;
    for (const auto& [device, code, value, type] : GetParam().events) {
        input_event event{{}, static_cast<__u16>(type), static_cast<__u16>(code), value};
        const auto change = keys.take(device, event);
        heard += change == SeatKeys::Change::pressed ? "P" : change == SeatKeys::Change::released ? "r" : "";
        const std::array<char, sizeof event> zeros{};
        EXPECT_EQ(std::memcmp(&event, zeros.data(), zeros.size()), 0);
    }
    EXPECT_EQ(heard, GetParam().heard);
}

INSTANTIATE_TEST_SUITE_P(
    Recorded, SeatKeysTest,
    testing::Values(
        Recording{"OneKey", {{1, KEY_A, 1}, {1, 0, 0, EV_SYN}, {1, KEY_A, 0}}, "Pr"},
        Recording{"KernelRepeats", {{1, KEY_A, 1}, {1, KEY_A, 2}, {1, KEY_A, 2}, {1, KEY_A, 0}}, "Pr"},
        Recording{
            "Shifted", {{1, KEY_LEFTSHIFT, 1}, {1, KEY_A, 1}, {1, KEY_LEFTSHIFT, 0}, {1, KEY_A, 0}}, "Pr"},
        Recording{"ShiftWhileHeld", {{1, KEY_A, 1}, {1, KEY_RIGHTSHIFT, 1}, {1, KEY_RIGHTSHIFT, 0}}, "P"},
        Recording{"Rolled", {{1, KEY_A, 1}, {1, KEY_B, 1}, {1, KEY_A, 0}, {1, KEY_B, 0}}, "PPr"},
        Recording{"FirstOfTwoStaysDown", {{1, KEY_A, 1}, {1, KEY_B, 1}, {1, KEY_B, 0}, {1, KEY_A, 0}}, "PPr"},
        Recording{"TwoKeyboards", {{1, KEY_A, 1}, {2, KEY_A, 1}, {1, KEY_A, 0}, {2, KEY_A, 0}}, "PPr"},
        Recording{"MouseOfACombinedDevice", {{1, BTN_LEFT, 1}, {1, BTN_LEFT, 0}, {1, REL_X, 1, EV_REL}}, ""},
        Recording{"ButtonsOfOtherKinds",
                  {{1, BTN_TOUCH, 1}, {1, BTN_DPAD_UP, 1}, {1, BTN_TRIGGER_HAPPY3, 1}, {1, BTN_TOOL_PEN, 1}},
                  ""},
        Recording{"KeysBeyondTheButtons", {{1, KEY_OK, 1}, {1, KEY_BRIGHTNESS_MAX, 1}}, "PP"},
        Recording{"ReleaseOfAKeyThatWasDownBefore", {{1, KEY_ENTER, 0}, {1, KEY_A, 1}, {1, KEY_A, 0}}, "Pr"},
        Recording{"EventsWereLost",
                  {{1, KEY_A, 1}, {2, SYN_DROPPED, 0, EV_SYN}, {1, SYN_DROPPED, 0, EV_SYN}},
                  "Pr"},
        Recording{"SameKeyTwiceDown", {{1, KEY_A, 1}, {1, KEY_A, 1}, {1, KEY_A, 0}, {1, KEY_A, 0}}, "PPr"}),
    [](const auto& test) { return test.param.name; });

TEST(SeatKeysUnplugged, ReleasesWhatTheDeviceHeld) {
    SeatKeys keys;
    input_event event{{}, EV_KEY, KEY_A, 1};
    keys.take(1, event);
    EXPECT_EQ(keys.forget(2), SeatKeys::Change::none);
    EXPECT_EQ(keys.forget(1), SeatKeys::Change::released);
    EXPECT_EQ(keys.forget(1), SeatKeys::Change::none);
}

} // namespace
} // namespace fernhollow::keytap
