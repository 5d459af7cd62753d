#pragma once

#include "Keytap/Protocol.h"
#include "Support/FileDescriptor.h"

#include <QSocketNotifier>
#include <QTimer>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace fernhollow {

/// The program's end of the key-blind service's socket (Keytap/Protocol.h): numbers come in, nothing else.
///
/// Shared by the event tap, which receives the presses, and the workspace, which asks for them when another
/// application comes to the front. Main thread only; needs an application object once it is open.
class KeytapConnection {
public:
    struct Handlers {
        std::function<void(std::uint64_t)> onPresses; ///< never 0
        /// The connection ended, after a refusal if the service gave one. Not called for close().
        std::function<void(std::optional<keytap::Refusal>)> onEnded;
    };

    explicit KeytapConnection(std::string path = keytap::socketPath) : path_(std::move(path)) {}
    KeytapConnection(const KeytapConnection&) = delete;
    KeytapConnection& operator=(const KeytapConnection&) = delete;

    /// Connects without waiting: 0 or the reason as an errno. Does nothing when it is open.
    int open();
    void close();
    bool isOpen() const { return static_cast<bool>(socket_); }

    void setHandlers(Handlers handlers) { handlers_ = std::move(handlers); }

    /// How the session repeats a held key, now and after each open().
    void setRepeat(keytap::RepeatSettings settings);

    /// Has the service send at once what it gathered, and runs `then` when that was delivered. Where no
    /// answer comes, as while the screen is locked, `then` runs after a moment.
    void deliver(std::function<void()> then);

private:
    template<typename Value>
    bool send(const Value& value);
    void receive();
    void take(std::uint64_t presses);
    void end(std::optional<keytap::Refusal> refusal);
    void settle();

    std::string path_;
    FileDescriptor socket_;
    std::unique_ptr<QSocketNotifier> notifier_;
    std::unique_ptr<QTimer> patience_;
    std::optional<keytap::RepeatSettings> repeat_;
    Handlers handlers_;
    std::vector<std::function<void()>> waiting_;
};

} // namespace fernhollow
