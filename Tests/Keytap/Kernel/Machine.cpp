#include "Machine.h"

#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <linux/uinput.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace fernhollow::keytap {
namespace fs = std::filesystem;

constexpr gid_t groupInput = 104;

void bringUp() {
    umask(022);
    for (const auto* folder : {"/proc", "/sys", "/dev", "/run"}) {
        fs::create_directories(folder);
    }
    mount("proc", "/proc", "proc", 0, nullptr);
    mount("sysfs", "/sys", "sysfs", 0, nullptr);
    mount("devtmpfs", "/dev", "devtmpfs", 0, nullptr);
    mount("tmpfs", "/run", "tmpfs", 0, nullptr);
    for (const auto* folder :
         {"/dev/input", "/run/udev/data", "/run/systemd/seats", "/run/systemd/sessions"}) {
        fs::create_directories(folder);
    }
    std::ifstream list("/modules");
    for (std::string name; std::getline(list, name);) {
        const Descriptor file(open(name.c_str(), O_RDONLY | O_CLOEXEC));
        syscall(SYS_finit_module, file.number(), "", 0);
    }
}

void replace(const std::string& path, const std::string& content) {
    std::ofstream(path + ".new") << content;
    fs::rename(path + ".new", path);
}

void sit(const std::string& seat, const std::vector<Session>& sessions) {
    std::string names, users;
    for (const auto& [name, user] : sessions) {
        replace("/run/systemd/sessions/" + name, "UID=" + std::to_string(user) +
                                                     "\nREMOTE=0\nCLASS=user\nSEAT=" + seat +
                                                     "\nTYPE=wayland\nSTATE=online\n");
        names += name + ' ';
        users += std::to_string(user) + ' ';
    }
    replace("/run/systemd/seats/" + seat, "IS_SEAT0=1\nACTIVE=" + sessions.front().name +
                                              "\nACTIVE_UID=" + std::to_string(sessions.front().user) +
                                              "\nSESSIONS=" + names + "\nUIDS=" + users + '\n');
}

std::vector<std::string> openNodes(pid_t process) {
    std::vector<std::string> nodes;
    std::error_code failure;
    for (const auto& file : fs::directory_iterator("/proc/" + std::to_string(process) + "/fd", failure)) {
        const auto target = fs::read_symlink(file, failure);
        if (target.parent_path() == "/dev/input") {
            nodes.push_back(target.filename());
        }
    }
    return nodes;
}

void announce(const std::string& node, const std::string& seat) {
    const auto path = "/dev/input/" + node;
    struct stat status{};
    stat(path.c_str(), &status);
    chown(path.c_str(), 0, groupInput);
    chmod(path.c_str(), 0660);
    replace("/run/udev/data/c13:" + std::to_string(minor(status.st_rdev)),
            "I:1\nE:ID_INPUT=1\nE:ID_SEAT=" + seat + "\nV:1\n");
}

std::string nodeNamed(const std::string& name) {
    std::string found;
    waitFor([&] {
        for (const auto& node : fs::directory_iterator("/sys/class/input")) {
            std::string nodesName;
            std::ifstream file(node.path() / "device/name");
            if (node.path().filename().string().starts_with("event") && std::getline(file, nodesName) &&
                nodesName == name) {
                found = node.path().filename();
            }
        }
        return !found.empty();
    });
    return found;
}

Keyboard::Keyboard(const std::string& name, Repeat repeat)
    : file_(open("/dev/uinput", O_WRONLY | O_CLOEXEC | O_NONBLOCK)) {
    const int file = file_.number();
    ioctl(file, UI_SET_EVBIT, EV_KEY);
    for (int code = 1; code < KEY_MICMUTE; ++code) {
        ioctl(file, UI_SET_KEYBIT, code);
    }
    for (const int button : {BTN_LEFT, BTN_RIGHT, BTN_SIDE, BTN_TRIGGER_HAPPY}) {
        ioctl(file, UI_SET_KEYBIT, button);
    }
    ioctl(file, UI_SET_EVBIT, EV_REL);
    ioctl(file, UI_SET_RELBIT, REL_X);
    if (repeat == Repeat::ofKernel) {
        ioctl(file, UI_SET_EVBIT, EV_REP);
    }
    uinput_setup setup{{BUS_USB, 1, 2, 3}, {}, 0};
    name.copy(setup.name, sizeof setup.name - 1);
    ioctl(file, UI_DEV_SETUP, &setup);
    ioctl(file, UI_DEV_CREATE);
    node_ = nodeNamed(name);
}

void Keyboard::send(std::uint16_t type, std::uint16_t code, std::int32_t value) {
    const input_event events[2] = {{{}, type, code, value}, {{}, EV_SYN, SYN_REPORT, 0}};
    if (write(file_.number(), events, sizeof events) < 0) {
        std::abort();
    }
}

void Keyboard::key(std::uint16_t code, std::int32_t value) {
    send(EV_KEY, code, value);
}

void Keyboard::stroke(std::uint16_t code) {
    key(code, 1);
    key(code, 0);
}

} // namespace fernhollow::keytap
