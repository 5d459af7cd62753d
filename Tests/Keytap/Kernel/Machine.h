#pragma once

#include "Keytap/Poller.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <sys/types.h>
#include <thread>
#include <vector>

/// The parts of a machine around the service, made by hand: kernel modules, udev's and logind's records,
/// keyboards.
namespace fernhollow::keytap {

/// Mounts what an empty system lacks and loads the modules that /modules lists.
void bringUp();

/// Replaces a file the way logind and udev do, by renaming.
void replace(const std::string& path, const std::string& content);

struct Session {
    std::string name;
    uid_t user;
};
/// Writes what logind keeps of a seat; the first session is in front.
void sit(const std::string& seat, const std::vector<Session>& sessions);

/// The nodes ("event5") that a process has open.
std::vector<std::string> openNodes(pid_t process);

/// Udev's part: the group may read the node, and it has a seat.
void announce(const std::string& node, const std::string& seat);

/// Whether the condition comes to hold within five seconds. Neither /proc nor /sys announces a change.
bool waitFor(auto condition) {
    for (int attempt = 0; attempt < 500 && !condition(); ++attempt) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return condition();
}

/// The node of the input device with this name; waits for it.
std::string nodeNamed(const std::string& name);

/// A device of uinput, unplugged when it goes.
class Keyboard {
public:
    enum class Repeat { ofKernel, none };
    explicit Keyboard(const std::string& name, Repeat repeat = Repeat::ofKernel);

    const std::string& node() const { return node_; }
    void send(std::uint16_t type, std::uint16_t code, std::int32_t value);
    void key(std::uint16_t code, std::int32_t value);
    void stroke(std::uint16_t code);
    void unplug() { file_ = Descriptor(); }

private:
    Descriptor file_;
    std::string node_;
};

} // namespace fernhollow::keytap
