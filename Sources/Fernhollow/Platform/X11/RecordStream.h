#pragma once

#include "Platform/X11/ModifierKeys.h"
#include "Platform/X11/XcbHandles.h"

#include <xcb/record.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>

namespace fernhollow {

/// Reads what the server sends over a connection that records key-down events, item by item.
///
/// libxcb makes the connection; from then on this class reads its socket. This halves the system calls
/// of a press and needs no allocation. It also leaves no key code behind: each is wiped at once, which
/// would not be possible in the queues of libxcb. The comparison with the modifier keys is the only
/// place in the program that looks at a key code. Used on the main thread, owned by its tap.
class RecordStream {
public:
    enum class Item {
        nothing,    ///< no complete item is left of what was received
        started,    ///< the recording has begun
        press,      ///< a key that is not a modifier went down or repeated
        mapChanged, ///< later items may need other modifier keys
        ended,      ///< the recording has ended, for whatever reason
    };

    /// Takes over `data`. libxcb must already have the connection's extension data.
    explicit RecordStream(XcbConnection data);
    RecordStream(const RecordStream&) = delete;
    RecordStream& operator=(const RecordStream&) = delete;
    ~RecordStream();

    int socket() const { return socket_; }

    /// Asks for the events of `context`; false when the server is gone.
    bool enable(xcb_record_context_t context);

    /// Reads what has arrived, without waiting.
    void receive();
    Item next(const ModifierKeys& modifiers);

    /// True as soon as there is something to receive; false after `atMost`.
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
    bool bodyIsEvents_ = false; ///< that body is recorded events
    bool closed_ = false;
};

} // namespace fernhollow
