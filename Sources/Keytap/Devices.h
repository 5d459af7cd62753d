#pragma once

#include "Keytap/Poller.h"
#include "Keytap/SeatKeys.h"

#include <map>
#include <set>
#include <string>

namespace fernhollow::keytap {

/// Learns that a key of a seat was pressed, never which.
class PressListener {
public:
    virtual ~PressListener() = default;
    virtual void pressed(const std::string& seat, Time at) = 0;
    /// The key that was pressed last is up, or its device is gone.
    virtual void released(const std::string& seat, Time at) = 0;
};

/// The event devices with keys at the seats that are wanted; all others are closed.
///
/// The kernel is told to keep back everything but keys that count, so a mouse, a button or Shift does not
/// even wake the service. A device counts for the seat that udev gave it, and only once udev has given it
/// one. Owned by the service, in its only thread.
class Devices {
public:
    Devices(Poller& poller, PressListener& listener);

    /// Reads the devices of these seats from now on, and of no others.
    void setSeats(std::set<std::string> seats);

    /// Passes on what the kernel holds already.
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
