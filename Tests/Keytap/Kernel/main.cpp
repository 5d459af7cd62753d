// The first and only program of a virtual machine: runs the service against the kernel's own input devices
// and says on the console whether each sum is exact. scripts/keytap_kernel starts it, and types on the USB
// keyboard for it.

#include "Keytap/Client.h"
#include "Keytap/Tally.h"
#include "Machine.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <grp.h>
#include <linux/input.h>
#include <sys/ioctl.h>
#include <sys/reboot.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace fernhollow::keytap;
using namespace std::chrono_literals;

namespace {

constexpr uid_t ada = 1000, bob = 1001, eve = 1002;
constexpr RepeatSettings noRepeat{600, 0};
int failures = 0;

void expect(const char* what, std::uint64_t expected, std::uint64_t seen) {
    const bool isRight = expected == seen;
    failures += !isRight;
    std::printf("%s %s: %llu", isRight ? "ok  " : "FAIL", what, static_cast<unsigned long long>(seen));
    std::printf(isRight ? "\n" : ", not %llu\n", static_cast<unsigned long long>(expected));
    std::fflush(stdout);
}

/// The service as systemd starts it: with its socket, as a user of no rights in the group `input`.
class Service {
public:
    Service() {
        const Descriptor listener(socket(AF_UNIX, SOCK_SEQPACKET, 0));
        sockaddr_un address{AF_UNIX, {}};
        std::strncpy(address.sun_path, socketPath, sizeof address.sun_path - 1);
        unlink(socketPath);
        if (bind(listener.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) < 0) {
            std::abort();
        }
        chmod(socketPath, 0666);
        listen(listener.number(), 64);
        process_ = fork();
        if (process_ == 0) {
            const gid_t input = 104;
            dup2(listener.number(), 3);
            if (setgroups(1, &input) || setgid(990) || setuid(990)) {
                _exit(1);
            }
            setenv("LISTEN_FDS", "1", 1);
            setenv("LISTEN_PID", std::to_string(getpid()).c_str(), 1);
            execl("/fernhollow-keytap", "fernhollow-keytap", nullptr);
            _exit(1);
        }
    }

    bool reads(const std::string& node) const {
        return waitFor([&] { return std::ranges::count(openNodes(process_), node) == 1; });
    }
    bool readsNothing() const {
        return waitFor([&] { return openNodes(process_).empty(); });
    }
    void end() {
        kill(process_, SIGTERM);
        waitpid(process_, nullptr, 0);
    }

private:
    pid_t process_ = 0;
};

Client clientOf(uid_t user) {
    // The kernel notes the effective user of the process that connects.
    seteuid(user);
    Client client(socketPath);
    seteuid(0);
    return client;
}

/// Connected and with its settings taken: an answer comes after both.
Client counting(uid_t user, RepeatSettings settings = noRepeat) {
    auto client = clientOf(user);
    client.send(settings);
    client.send(deliverNow);
    Client::Answers first;
    client.takeOne(first, 5s);
    return client;
}

std::uint64_t sum(Client& client) {
    return client.take(350ms).sum;
}

void strokes(Keyboard& keyboard, int count) {
    for (int i = 0; i < count; ++i) {
        keyboard.stroke(static_cast<std::uint16_t>(KEY_1 + i % 10));
        std::this_thread::sleep_for(1ms);
    }
}

/// What was typed on `node` by the kernel's own clock: how long the last key was down.
Time heldFor(int reader) {
    Time down{}, up{};
    input_event event{};
    while (read(reader, &event, sizeof event) > 0) {
        const Time at = std::chrono::seconds(event.input_event_sec) + Time(event.input_event_usec);
        if (event.type == EV_KEY && event.value != 2) {
            (event.value ? down : up) = at;
        }
    }
    return up - down;
}

void keysModifiersAndButtons(Service& service) {
    Keyboard keyboard("plain");
    announce(keyboard.node(), "seat0");
    auto client = counting(ada);
    expect("a keyboard of the seat is read", 1, service.reads(keyboard.node()));
    strokes(keyboard, 300);
    expect("300 keys", 300, sum(client));
    for (const int code : {KEY_LEFTSHIFT, KEY_RIGHTCTRL, KEY_CAPSLOCK, KEY_RIGHTALT, KEY_LEFTMETA}) {
        keyboard.stroke(static_cast<std::uint16_t>(code));
    }
    for (int i = 0; i < 50; ++i) {
        keyboard.stroke(BTN_LEFT);
        keyboard.send(EV_REL, REL_X, 1);
    }
    expect("modifiers, buttons, movement", 0, sum(client));
    strokes(keyboard, 7);
    client.send(deliverNow);
    Client::Answers answer;
    client.takeOne(answer, 5s);
    expect("all of 7 keys in the answer to a question", 7, answer.sum);
}

void repeatsOf(Service& service, const char* name, Keyboard::Repeat repeat) {
    Keyboard keyboard(name, repeat);
    announce(keyboard.node(), "seat0");
    const RepeatSettings settings{200, 20};
    auto client = counting(ada, settings);
    service.reads(keyboard.node());
    const Descriptor reader(open(("/dev/input/" + keyboard.node()).c_str(), O_RDONLY | O_NONBLOCK));
    const int clock = CLOCK_MONOTONIC;
    ioctl(reader.number(), EVIOCSCLOCKID, &clock);
    keyboard.key(KEY_A, 1);
    std::this_thread::sleep_for(1225ms);
    keyboard.key(KEY_A, 0);
    const auto due = repeats(heldFor(reader.number()), settings);
    expect("a held key repeats as the session says", 1 + due, sum(client));
    expect("some twenty times", 1, due >= 20 && due <= 40);
    expect("and stops", 0, sum(client));
}

void grabbedAndRemapped(Service& service) {
    Keyboard real("real"), virtualOne("remapped", Keyboard::Repeat::none);
    announce(real.node(), "seat0");
    announce(virtualOne.node(), "seat0");
    auto client = counting(ada);
    service.reads(real.node());
    service.reads(virtualOne.node());
    const Descriptor remapper(open(("/dev/input/" + real.node()).c_str(), O_RDONLY | O_NONBLOCK));
    ioctl(remapper.number(), EVIOCGRAB, 1);
    for (int i = 0; i < 50; ++i) {
        real.stroke(KEY_A);
        input_event event{};
        while (read(remapper.number(), &event, sizeof event) > 0) {
            if (event.type == EV_KEY) {
                virtualOne.key(KEY_B, event.value);
            }
        }
    }
    expect("50 keys through a remapper", 50, sum(client));
}

void unpluggedWhileHeld(Service& service) {
    auto client = counting(ada, {300, 1});
    Keyboard keyboard("short-lived");
    announce(keyboard.node(), "seat0");
    expect("a keyboard plugged in later is read", 1, service.reads(keyboard.node()));
    keyboard.key(KEY_A, 1);
    std::this_thread::sleep_for(800ms);
    keyboard.unplug();
    std::this_thread::sleep_for(1500ms);
    expect("the press and its one repeat before unplugging", 2, sum(client));
}

void seatsAndSwitches(Service& service) {
    Keyboard first("first"), second("second");
    announce(first.node(), "seat0");
    announce(second.node(), "seat1");
    sit("seat1", {{"s1", bob}});
    std::this_thread::sleep_for(50ms);
    auto ofAda = counting(ada);
    auto ofBob = counting(bob);
    service.reads(first.node());
    service.reads(second.node());
    strokes(first, 10);
    strokes(second, 20);
    expect("seat 0", 10, sum(ofAda));
    expect("seat 1", 20, sum(ofBob));

    sit("seat0", {{"c2", eve}, {"c1", ada}});
    std::this_thread::sleep_for(50ms);
    auto ofEve = counting(eve);
    strokes(first, 30);
    expect("nothing for the user whose session is behind", 0, sum(ofAda));
    expect("all for the user in front", 30, sum(ofEve));
    sit("seat0", {{"c1", ada}, {"c2", eve}});
    std::this_thread::sleep_for(50ms);
    strokes(first, 5);
    expect("counts go on when the session is back", 5, sum(ofAda));
    announce(first.node(), "seat1");
    std::this_thread::sleep_for(100ms);
    strokes(first, 6);
    expect("a keyboard that moved to the other seat", 0, sum(ofAda));
    expect("counts there", 6, sum(ofBob));
}

void usbKeyboard(Service& service) {
    const auto node = nodeNamed("QEMU QEMU USB Keyboard");
    announce(node, "seat0");
    auto client = counting(ada);
    expect("the USB keyboard is read", 1, service.reads(node));
    std::puts("TYPE 40"); // 40 keys and, between them, as many Shift keys
    std::fflush(stdout);
    std::uint64_t typed = 0;
    waitFor([&] { return (typed += client.take(10ms).sum) >= 40; });
    expect("40 keys of the USB keyboard", 40, typed + sum(client));
}

void ends(Service& service) {
    expect("without a peer no device is open", 1, service.readsNothing());
    auto client = counting(ada);
    service.end();
    expect("a client sees the end of the service", 1, client.take(300ms).isClosed);
}

} // namespace

int main() {
    bringUp();
    std::puts("UP");
    sit("seat0", {{"c1", ada}, {"c2", eve}});
    Service service;
    keysModifiersAndButtons(service);
    repeatsOf(service, "repeating", Keyboard::Repeat::ofKernel);
    repeatsOf(service, "not repeating", Keyboard::Repeat::none);
    grabbedAndRemapped(service);
    unpluggedWhileHeld(service);
    seatsAndSwitches(service);
    usbKeyboard(service);
    ends(service);
    std::printf("DONE %d\n", failures);
    std::fflush(stdout);
    sync();
    reboot(RB_POWER_OFF);
}
