#include "Platform/EventTap.h"
#include "Platform/Surroundings.h"
#include "Platform/X11/RecordTap.h"
#include "Platform/XClient.h"
#include "Support/VirtualDisplay.h"

#include <QProcess>
#include <gmock/gmock.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace fernhollow::test {
namespace {

constexpr xcb_keysym_t letterA = 'a';
constexpr xcb_keysym_t letterQ = 'q';
constexpr xcb_keysym_t capsLock = 0xffe5;
constexpr xcb_keysym_t isoLevel3Shift = 0xfe03;

class Tap : public ::testing::Test {
protected:
    Tap() {
        surroundings.set("DISPLAY", display.name());
        person.emplace(display.name());
        window = person->makeWindow();
        person->focus(window);
    }

    void start() {
        auto provider = makeEventTapProvider({});
        ASSERT_TRUE(provider->isProcessTrusted(false));
        tap = provider->createTap(
            [this](TapEvent event) { ++(event == TapEvent::keyDown ? presses : losses); });
        ASSERT_NE(tap, nullptr);
        tap->setEnabled(true);
    }

    // A press that counts, to know that all before it has been seen: what the tap reports is in order.
    int pressesBeforeMark() {
        const int before = presses;
        person->type(person->key(letterQ));
        EXPECT_TRUE(eventually([&] { return presses > before; }));
        settle();
        return presses - 1;
    }

    static void setLayout(const QStringList& arguments) {
        ASSERT_EQ(QProcess::execute(QStringLiteral("setxkbmap"), arguments), 0);
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
    person->type(person->key(letterA), 300);
    EXPECT_TRUE(eventually([&] { return presses >= 300; }));
    settle();
    EXPECT_EQ(presses, 300);
    EXPECT_EQ(losses, 0);
}

TEST_F(Tap, CountsPressesUnderAKeyboardGrab) {
    start();
    ASSERT_TRUE(person->grabKeyboard(window));
    person->type(person->key(letterA), 20);
    EXPECT_EQ(pressesBeforeMark(), 20);
}

TEST_F(Tap, CountsEachRepeatOfAHeldKey) {
    start();
    person->down(person->key(letterA));
    EXPECT_TRUE(eventually([&] { return presses >= 10; }));
    person->up(person->key(letterA));
}

TEST_F(Tap, HearsNothingWhileDisabled) {
    start();
    person->type(person->key(letterA), 3);
    EXPECT_TRUE(eventually([&] { return presses == 3; }));
    tap->setEnabled(false);
    person->type(person->key(letterA), 5);
    settle();
    tap->setEnabled(true);
    EXPECT_EQ(pressesBeforeMark(), 3);
    EXPECT_EQ(losses, 0);
}

TEST_F(Tap, FollowsAMapThatChangesWhileItRuns) {
    start();
    const xcb_keycode_t key = person->key(letterA);
    person->type(key);
    EXPECT_EQ(pressesBeforeMark(), 1);
    person->remap(key, isoLevel3Shift);
    person->type(key, 5);
    EXPECT_EQ(pressesBeforeMark(), 2);
    person->remap(key, letterA);
    person->type(key, 2);
    EXPECT_EQ(pressesBeforeMark(), 5);
    // And while nothing is recorded.
    tap->setEnabled(false);
    person->remap(key, capsLock);
    tap->setEnabled(true);
    person->type(key, 4);
    EXPECT_EQ(pressesBeforeMark(), 6);
}

TEST_F(Tap, SaysOnceThatTheServerIsGone) {
    start();
    person->type(person->key(letterA));
    EXPECT_TRUE(eventually([&] { return presses == 1; }));
    display.kill();
    EXPECT_TRUE(eventually([&] { return losses > 0; }));
    tap->setEnabled(false);
    tap->setEnabled(true);
    settle();
    EXPECT_EQ(losses, 1);
    EXPECT_EQ(presses, 1);
    tap.reset();
}

TEST_F(Tap, SaysSoWhenTheServerIsGoneBeforeItStarts) {
    start();
    tap->setEnabled(false);
    display.kill();
    tap->setEnabled(true);
    EXPECT_EQ(losses, 0) << "not from inside the call";
    EXPECT_TRUE(eventually([&] { return losses > 0; }));
    settle();
    EXPECT_EQ(losses, 1);
}

TEST_F(Tap, EndsWhenItsContextIsTakenAway) {
    start();
    XcbConnection control = connectToDisplay();
    const xcb_pixmap_t itsPixmap = xcb_generate_id(control.get());
    xcb_create_pixmap(control.get(), 1, itsPixmap, rootWindow(control.get()), 1, 1);
    auto other = RecordTap::create(std::move(control),
                                   [this](TapEvent event) { losses += event == TapEvent::disabled ? 1 : 0; });
    ASSERT_NE(other, nullptr);
    other->setEnabled(true);
    xcb_kill_client(person->connection(), itsPixmap);
    person->sync();
    EXPECT_TRUE(eventually([&] { return losses == 1; }));
    person->type(person->key(letterA));
    EXPECT_TRUE(eventually([&] { return presses == 1; }));
}

TEST_F(Tap, MayBeDestroyedByItsOwner) {
    struct Case {
        const char* when;
        TapEvent at;
    };
    for (const Case& each : {Case{"a press", TapEvent::keyDown}, Case{"the loss", TapEvent::disabled}}) {
        SCOPED_TRACE(each.when);
        int calls = 0;
        auto provider = makeEventTapProvider({});
        tap = provider->createTap([this, &calls, at = each.at, text = std::string(100, 'x')](TapEvent event) {
            if (event == at) {
                ++calls;
                tap.reset();
                EXPECT_EQ(text.size(), 100U) << "what the callback holds outlives the tap";
            }
        });
        ASSERT_NE(tap, nullptr);
        tap->setEnabled(true);
        if (each.at == TapEvent::disabled) {
            display.kill();
        } else {
            for (int press = 0; press < 50; ++press) { // without a pause, so that several share a batch
                xcb_keycode_t key = person->key(letterA);
                person->down(key);
                person->up(key);
            }
        }
        EXPECT_TRUE(eventually([&] { return calls > 0; }));
        settle();
        EXPECT_EQ(calls, 1);
    }
}

struct Layout {
    const char* name;
    QStringList arguments;
    std::vector<xcb_keycode_t> others; ///< keys that are modifiers on this layout in particular
};

class Modifiers : public Tap, public ::testing::WithParamInterface<Layout> {};

// By key code: both Shift, Ctrl, Alt (the right one AltGr) and Super keys and Caps Lock of a PC keyboard;
// 77 is its Num Lock, which is a Tab key on neo, where the keys 51 and 94 are modifiers instead.
TEST_P(Modifiers, AloneAreNotPresses) {
    setLayout(GetParam().arguments);
    start();
    std::vector<xcb_keycode_t> keys{50, 62, 37, 105, 64, 108, 133, 134, 66};
    keys.insert(keys.end(), GetParam().others.begin(), GetParam().others.end());
    for (const xcb_keycode_t key : keys) {
        person->type(key, 2);
    }
    EXPECT_EQ(pressesBeforeMark(), 0);
    // Together with a key they are one press.
    person->down(50);
    person->type(person->key(letterA));
    person->up(50);
    EXPECT_EQ(pressesBeforeMark(), 2);
}

INSTANTIATE_TEST_SUITE_P(
    Layouts, Modifiers,
    ::testing::Values(Layout{"us", {QStringLiteral("us")}, {77}}, Layout{"de", {QStringLiteral("de")}, {77}},
                      Layout{"usIntl", {QStringLiteral("us"), QStringLiteral("intl")}, {77}},
                      Layout{"usThenDe", {QStringLiteral("us,de")}, {77}},
                      Layout{"neo", {QStringLiteral("de"), QStringLiteral("neo")}, {51, 94}}),
    [](const auto& tested) { return tested.param.name; });

TEST_F(Tap, FollowsAChangedLayout) {
    setLayout({QStringLiteral("us")});
    start();
    constexpr xcb_keycode_t besideLeftShift = 94;
    person->type(besideLeftShift);
    EXPECT_EQ(pressesBeforeMark(), 1);
    setLayout({QStringLiteral("de"), QStringLiteral("-option"), QStringLiteral("lv3:lsgt_switch")});
    settle();
    person->type(besideLeftShift, 3);
    EXPECT_EQ(pressesBeforeMark(), 2);
}

class Trust : public ::testing::Test {
protected:
    Surroundings surroundings;
    std::vector<TrustProblem> shown;
    std::unique_ptr<EventTapProvider> provider =
        makeEventTapProvider([this](const TrustProblem& problem) { shown.push_back(problem); });
};

TEST_F(Trust, IsRefusedUnderWaylandEvenWithAnXServer) {
    const VirtualDisplay display;
    surroundings.set("DISPLAY", display.name());
    EXPECT_TRUE(provider->isProcessTrusted(true));
    EXPECT_TRUE(shown.empty());
    for (const char* variable : {"XDG_SESSION_TYPE", "WAYLAND_DISPLAY"}) {
        SCOPED_TRACE(variable);
        surroundings.set(variable, "wayland");
        EXPECT_FALSE(provider->isProcessTrusted(false));
        EXPECT_TRUE(shown.empty());
        EXPECT_FALSE(provider->isProcessTrusted(true));
        ASSERT_EQ(shown.size(), 1U);
        EXPECT_THAT(shown[0].missing, ::testing::HasSubstr("Wayland"));
        EXPECT_THAT(shown[0].remedy, ::testing::HasSubstr("X11"));
        EXPECT_EQ(provider->createTap([](TapEvent) {}), nullptr);
        shown.clear();
        surroundings.set(variable, "");
    }
    EXPECT_EQ(surroundings.logged("Wayland"), 1);
}

TEST_F(Trust, IsRefusedWithoutTheRecordExtension) {
    const VirtualDisplay display({"-extension", "RECORD"});
    surroundings.set("DISPLAY", display.name());
    for (int second = 0; second < 5; ++second) {
        EXPECT_FALSE(provider->isProcessTrusted(second == 0));
    }
    ASSERT_EQ(shown.size(), 1U);
    EXPECT_THAT(shown[0].missing, ::testing::HasSubstr("RECORD"));
    EXPECT_EQ(surroundings.logged("RECORD"), 1);
    EXPECT_EQ(provider->createTap([](TapEvent) {}), nullptr);
}

TEST_F(Trust, ComesWithTheDisplayAndGoesWithIt) {
    EXPECT_FALSE(provider->isProcessTrusted(false)) << "no DISPLAY";
    {
        const VirtualDisplay display;
        surroundings.set("DISPLAY", display.name());
        EXPECT_TRUE(eventually([&] { return provider->isProcessTrusted(false); }));
        EXPECT_NE(provider->createTap([](TapEvent) {}), nullptr);
        EXPECT_TRUE(provider->isProcessTrusted(false)) << "the tap took the connection";
    }
    EXPECT_TRUE(eventually([&] { return !provider->isProcessTrusted(false); }));
    EXPECT_EQ(surroundings.logged("cannot reach"), 2);
}

} // namespace
} // namespace fernhollow::test
