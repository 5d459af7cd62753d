#pragma once

#include "Platform/X11/ModifierKeys.h"
#include "Platform/X11/XcbHandles.h"

#include <xcb/record.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>

namespace fernhollow {

/// What the server sends over a connection that records key-down events, item by item.
///
/// libxcb makes the connection; from then on its socket is read here. That takes half the system calls
/// and no allocation for a press, and it leaves no key code behind: each is wiped as it is passed, which
/// the queues of libxcb would not allow. The comparison with the modifier keys is the only look at a key
/// code in the program. Used on the main thread, owned by its tap.
class RecordStream {
public:
    enum class Item {
        nothing,    ///< of what was received, all is passed
        started,    ///< from here on presses are recorded
        press,      ///< of a key that is not a modifier
        mapChanged, ///< the modifier keys may be others from here on
        ended,      ///< nothing more is recorded, whatever the reason
    };

    /// Takes over `data`, whose extension data must be known to libxcb already.
    explicit RecordStream(XcbConnection data);
    RecordStream(const RecordStream&) = delete;
    RecordStream& operator=(const RecordStream&) = delete;
    ~RecordStream();

    int socket() const { return socket_; }

    /// Asks for the events of `context`; false when the server is gone.
    bool enable(xcb_record_context_t context);

    /// Takes what has arrived, without waiting.
    void receive();
    Item next(const ModifierKeys& modifiers);

    /// True as soon as there is something to receive.
    bool waitForMore(std::chrono::milliseconds atMost) const;

private:
    static constexpr std::size_t unit = 32; ///< of events and of the head of a reply

    Item passHead();
    Item passRecorded(const ModifierKeys& modifiers);
    void wipe(std::size_t count);

    XcbConnection data_;
    int socket_;
    std::array<std::uint8_t, 4096> buffer_{};
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
    std::size_t bodyLeft_ = 0;  ///< of the reply or long event that is being passed
    bool bodyIsEvents_ = false; ///< recorded ones
    bool closed_ = false;
};

} // namespace fernhollow
