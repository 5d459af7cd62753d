#pragma once

#include "Keytap/Poller.h"
#include "Keytap/SeatKeys.h"

#include <map>
#include <set>
#include <string>

namespace fernhollow::keytap {

/// Is told that a key at a seat was pressed, never which key.
class PressListener {
public:
    virtual ~PressListener() = default;
    virtual void pressed(const std::string& seat, Time at) = 0;
    /// The key that was pressed last came up, or its device was removed.
    virtual void released(const std::string& seat, Time at) = 0;
};

/// Reads the event devices with keys at the wanted seats, and keeps all others closed.
///
/// The kernel is asked to hold back everything but keys that count, so a mouse, a button or Shift does
/// not even wake the service. A device counts for the seat that udev gave it, and is not read before
/// that. Owned by the service, in its only thread.
class Devices {
public:
    Devices(Poller& poller, PressListener& listener);

    /// From now on reads the devices of these seats only.
    void setSeats(std::set<std::string> seats);

    /// Reports the presses that the kernel has already received.
    void readAll();

private:
    struct Device {
        Descriptor file;
        std::string seat;
    };
    using Table = std::map<std::string, Device>;

    void scan();
    void open(const std::string& name, const std::string& seat);
    /// False when the device is gone.
    bool read(Device& device);
    Table::iterator close(Table::iterator device);
    void report(const std::string& seat, SeatKeys::Change change, Time at);

    Poller& poller_;
    PressListener& listener_;
    Descriptor changes_;
    std::set<std::string> seats_;
    std::map<std::string, SeatKeys> keys_; // by seat
    Table devices_;                        // by the name of their node
};

} // namespace fernhollow::keytap
