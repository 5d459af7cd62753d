#include "Platform/Surroundings.h"
#include "Platform/X11/X11Desktop.h"
#include "Platform/X11/XClient.h"
#include "Support/VirtualDisplay.h"

#include <QProcess>
#include <gmock/gmock.h>

namespace fernhollow::tests {
namespace {

// As a PC keyboard numbers them.
constexpr xcb_keycode_t letter = 38;
constexpr xcb_keycode_t otherLetter = 24;
constexpr xcb_keycode_t leftShift = 50;

class Tap : public testing::Test {
protected:
    Tap() {
        surroundings.set("DISPLAY", display.name());
        person.emplace(display.name());
        window = person->makeWindow();
    }

    void start(EventTapProvider::Callback callback) {
        tap = makeX11EventTapProvider({})->createTap(std::move(callback));
        ASSERT_NE(tap, nullptr);
        tap->setEnabled(true);
    }
    void start() {
        start([this](TapEvent event) { ++(event == TapEvent::keyDown ? presses : losses); });
    }

    // What was counted since the last time. The tap reports in order: a last press that counts says that
    // all before it has been seen.
    int newPresses() {
        const int before = presses;
        person->type(otherLetter);
        EXPECT_TRUE(waitUntil([&] { return presses > before; }));
        settle();
        return std::exchange(presses, 0) - 1;
    }

    Surroundings surroundings;
    VirtualDisplay display;
    std::optional<XClient> person;
    xcb_window_t window = XCB_WINDOW_NONE;
    std::unique_ptr<EventTap> tap;
    int presses = 0;
    int losses = 0;
};

TEST_F(Tap, CountsEveryPressInSomebodyElsesWindow) {
    start();
    person->type(letter, 300);
    EXPECT_TRUE(waitUntil([&] { return presses >= 300; }));
    settle();
    EXPECT_EQ(std::exchange(presses, 0), 300);
    ASSERT_TRUE(person->grabKeyboard(window));
    person->type(letter, 20);
    EXPECT_EQ(newPresses(), 20) << "under a keyboard grab";
    EXPECT_EQ(losses, 0);
}

TEST_F(Tap, FollowsChangedKeysAndHearsNothingWhileDisabled) {
    constexpr xcb_keysym_t capsLock = 0xffe5;
    constexpr xcb_keysym_t isoLevel3Shift = 0xfe03; // AltGr, which no modifier map names
    start();
    person->remap(letter, isoLevel3Shift);
    person->type(letter, 5);
    EXPECT_EQ(newPresses(), 0);
    person->remap(letter, 'a');
    person->type(letter, 2);
    EXPECT_EQ(newPresses(), 2);
    tap->setEnabled(false);
    person->type(letter, 5);
    person->remap(letter, capsLock);
    settle();
    tap->setEnabled(true);
    person->type(letter, 4);
    EXPECT_EQ(newPresses(), 0);
}

TEST_F(Tap, CountsNoModifierOfTheLayoutChosenMeanwhile) {
    using Keys = std::vector<xcb_keycode_t>;
    // Both Shift, Ctrl, Alt (the right one AltGr) and Super keys, and Caps Lock.
    const Keys always{50, 62, 37, 105, 64, 108, 133, 134, 66};
    struct Layout {
        const char* arguments;
        Keys modifiers;
        Keys letters;
    };
    const std::vector<Layout> layouts{{"us", {77}, {51, 94}},
                                      {"us intl", {77}, {51, 94}},
                                      {"us,de", {77}, {51, 94}},
                                      {"de neo", {51, 94}, {77, letter}},
                                      {"de -option lv3:lsgt_switch", {77, 94}, {51, letter}}};
    const auto type = [this](const Keys& keys) {
        for (const xcb_keycode_t key : keys) {
            person->type(key, 2);
        }
        return newPresses();
    };
    for (const Layout& layout : layouts) {
        SCOPED_TRACE(layout.arguments);
        ASSERT_EQ(
            QProcess::execute(QStringLiteral("setxkbmap"), QString::fromLatin1(layout.arguments).split(u' ')),
            0);
        if (!tap) {
            start();
        }
        settle();
        EXPECT_EQ(type(always), 0);
        EXPECT_EQ(type(layout.modifiers), 0);
        person->down(leftShift);
        EXPECT_EQ(type(layout.letters), 4);
        person->up(leftShift);
    }
}

TEST_F(Tap, SaysOnceThatTheServerIsGone) {
    start();
    display.kill();
    EXPECT_TRUE(waitUntil([&] { return losses > 0; }));
    tap->setEnabled(false);
    tap->setEnabled(true);
    settle();
    EXPECT_EQ(losses, 1);
}

TEST_F(Tap, MayBeDestroyedInItsCallback) {
    for (const TapEvent at : {TapEvent::keyDown, TapEvent::disabled}) {
        int calls = 0;
        start([this, &calls, at, text = std::string(100, 'x')](TapEvent event) {
            if (event == at) {
                ++calls;
                tap.reset();
                EXPECT_EQ(text.size(), 100U) << "what the callback holds outlives the tap";
            }
        });
        if (at == TapEvent::disabled) {
            display.kill();
        } else {
            person->type(letter, 50); // several share a batch
        }
        EXPECT_TRUE(waitUntil([&] { return calls > 0; }));
        settle();
        EXPECT_EQ(calls, 1);
    }
}

class Trust : public testing::Test {
protected:
    Surroundings surroundings;
    std::unique_ptr<EventTapProvider> provider = makeX11EventTapProvider({});
};

TEST_F(Trust, IsRefusedWithoutTheRecordExtension) {
    const VirtualDisplay display({QStringLiteral("-extension"), QStringLiteral("RECORD")});
    surroundings.set("DISPLAY", display.name());
    for (int second = 0; second < 5; ++second) {
        EXPECT_FALSE(provider->isProcessTrusted(false));
    }
    EXPECT_EQ(surroundings.logged("RECORD"), 1);
    EXPECT_EQ(provider->createTap([](TapEvent) {}), nullptr);
}

TEST_F(Trust, ComesWithTheDisplayAndGoesWithIt) {
    EXPECT_FALSE(provider->isProcessTrusted(false)) << "no DISPLAY";
    {
        const VirtualDisplay display;
        surroundings.set("DISPLAY", display.name());
        EXPECT_TRUE(waitUntil([&] { return provider->isProcessTrusted(false); }));
        EXPECT_NE(provider->createTap([](TapEvent) {}), nullptr);
        EXPECT_TRUE(provider->isProcessTrusted(false)) << "the tap took the connection";
    }
    EXPECT_TRUE(waitUntil([&] { return !provider->isProcessTrusted(false); }));
    EXPECT_EQ(surroundings.logged("cannot reach"), 2);
}

} // namespace
} // namespace fernhollow::tests
