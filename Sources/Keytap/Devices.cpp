#include "Keytap/Devices.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <string.h> // explicit_bzero
#include <string_view>
#include <sys/epoll.h>
#include <sys/inotify.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <system_error>
#include <systemd/sd-device.h>
#include <unistd.h>
#include <utility>

namespace fernhollow::keytap {
namespace {

constexpr auto nodes = "/dev/input";
constexpr auto udevRecords = "/run/udev/data";

using KeyBits = std::array<std::uint8_t, (KEY_CNT + 7) / 8>;

struct ForgetDevice {
    void operator()(sd_device* device) const { sd_device_unref(device); }
};

/// The seat that udev gave to a device; empty until udev is done with it.
std::string seatOf(const std::string& path) {
    struct stat node{};
    sd_device* found = nullptr;
    if (stat(path.c_str(), &node) < 0 || sd_device_new_from_devnum(&found, 'c', node.st_rdev) < 0) {
        return {};
    }
    const std::unique_ptr<sd_device, ForgetDevice> device(found);
    if (sd_device_get_is_initialized(found) <= 0) {
        return {};
    }
    const char* seat = nullptr;
    return sd_device_get_property_value(found, "ID_SEAT", &seat) < 0 ? "seat0" : seat;
}

/// The device's keys that count.
KeyBits countedKeys(int file) {
    KeyBits bits{};
    if (ioctl(file, EVIOCGBIT(EV_KEY, bits.size()), bits.data()) < 0) {
        return {};
    }
    for (std::uint16_t code = 0; code < KEY_CNT; ++code) {
        if (!isCounted(code)) {
            bits.at(code / 8U) &= static_cast<std::uint8_t>(~(1U << code % 8U));
        }
    }
    return bits;
}

/// Asks the kernel to deliver only these keys to `file` (EVIOCSMASK). False when the kernel cannot do that.
bool restrictTo(KeyBits keys, int file) {
    for (std::uint32_t type = EV_SYN + 1; type < EV_CNT; ++type) {
        input_mask mask{type, 0, 0};
        if (type == EV_KEY) {
            mask.codes_size = static_cast<std::uint32_t>(keys.size());
            mask.codes_ptr = reinterpret_cast<std::uintptr_t>(keys.data());
        }
        if (ioctl(file, EVIOCSMASK, &mask) < 0) {
            return false;
        }
    }
    const int clock = CLOCK_MONOTONIC;
    return ioctl(file, EVIOCSCLOCKID, &clock) == 0;
}

} // namespace

Devices::Devices(Poller& poller, PressListener& listener)
    : poller_(poller), listener_(listener), changes_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    // A new node appears first. Later udev renames its record of the node into place.
    if (inotify_add_watch(changes_.number(), nodes, IN_CREATE | IN_ATTRIB | IN_DELETE) < 0) {
        throw std::system_error(errno, std::generic_category(), nodes);
    }
    inotify_add_watch(changes_.number(), udevRecords, IN_MOVED_TO);
    poller_.watch(changes_.number(), EPOLLIN, [this] {
        alignas(inotify_event) std::array<char, 4096> changes{};
        while (::read(changes_.number(), changes.data(), changes.size()) > 0) {
        }
        scan();
    });
}

void Devices::setSeats(std::set<std::string> seats) {
    if (seats != seats_) {
        seats_ = std::move(seats);
        scan();
    }
}

void Devices::readAll() {
    for (auto device = devices_.begin(); device != devices_.end();) {
        device = read(device->second) ? std::next(device) : close(device);
    }
}

void Devices::scan() {
    std::map<std::string, std::string> seats;
    std::error_code failure;
    for (const auto& node : std::filesystem::directory_iterator(nodes, failure)) {
        const auto name = node.path().filename().string();
        auto seat = name.starts_with("event") && !seats_.empty() ? seatOf(node.path()) : std::string();
        if (seats_.contains(seat)) {
            seats.emplace(name, std::move(seat));
        }
    }
    for (auto device = devices_.begin(); device != devices_.end();) {
        const auto kept = seats.find(device->first);
        const bool stays = kept != seats.end() && kept->second == device->second.seat && read(device->second);
        device = stays ? std::next(device) : close(device);
    }
    for (const auto& [name, seat] : seats) {
        if (!devices_.contains(name)) {
            open(name, seat);
        }
    }
}

void Devices::open(const std::string& name, const std::string& seat) {
    const auto path = std::string(nodes) + '/' + name;
    Descriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (file.number() < 0) {
        return;
    }
    const auto keys = countedKeys(file.number());
    if (keys == KeyBits{} || !restrictTo(keys, file.number())) {
        return;
    }
    poller_.watch(file.number(), EPOLLIN, [this, name] {
        const auto device = devices_.find(name);
        if (!read(device->second)) {
            close(device);
        }
    });
    devices_.emplace(name, Device{std::move(file), seat});
}

bool Devices::read(Device& device) {
    std::array<input_event, 64> events{};
    const int file = device.file.number();
    auto& keys = keys_[device.seat];
    ssize_t size = sizeof events;
    // When the buffer was not filled, there is nothing more to read.
    while (size == sizeof events && (size = ::read(file, events.data(), sizeof events)) > 0) {
        for (std::size_t i = 0; i < static_cast<std::size_t>(size) / sizeof(input_event); ++i) {
            const Time at =
                std::chrono::seconds(events.at(i).input_event_sec) + Time(events.at(i).input_event_usec);
            report(device.seat, keys.take(file, events.at(i)), at);
        }
    }
    return size > 0 || (size < 0 && (errno == EAGAIN || errno == EINTR));
}

Devices::Table::iterator Devices::close(Table::iterator device) {
    const auto& [file, seat] = device->second;
    report(seat, keys_[seat].forget(file.number()), monotonicNow());
    poller_.drop(file.number());
    return devices_.erase(device);
}

void Devices::report(const std::string& seat, SeatKeys::Change change, Time at) {
    if (change == SeatKeys::Change::pressed) {
        listener_.pressed(seat, at);
    } else if (change == SeatKeys::Change::released) {
        listener_.released(seat, at);
    }
}

} // namespace fernhollow::keytap
