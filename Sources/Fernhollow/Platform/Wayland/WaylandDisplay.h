#pragma once

#include "Keytap/Protocol.h"
#include "Platform/Wayland/ForeignToplevels.h"

#include <QSocketNotifier>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

struct wl_display;
struct wl_keyboard;
struct wl_registry;
struct wl_seat;

namespace fernhollow {

/// Our own connection to the compositor, beside the toolkit's: which application is active, and how the
/// session repeats a held key.
///
/// The connection has no window. A compositor sends keys to the connection of the window in front alone, so
/// none arrive here. Main thread only; needs an application object.
class WaylandDisplay {
public:
    struct Handlers {
        std::function<void(const std::string&)> onActiveApplication; ///< its identifier, empty for none
        std::function<void(keytap::RepeatSettings)> onRepeat;
    };

    /// Does nothing, and reports nothing, where the compositor cannot be reached.
    explicit WaylandDisplay(Handlers handlers);
    WaylandDisplay(const WaylandDisplay&) = delete;
    WaylandDisplay& operator=(const WaylandDisplay&) = delete;
    ~WaylandDisplay();

private:
    struct Events;
    void read();
    void report(const std::string& application);

    Handlers handlers_;
    std::unique_ptr<wl_display, void (*)(wl_display*)> display_;
    std::unique_ptr<QSocketNotifier> notifier_;
    wl_registry* registry_ = nullptr;
    wl_seat* seat_ = nullptr;
    wl_keyboard* keyboard_ = nullptr;
    std::unique_ptr<ForeignToplevels> toplevels_;
    std::optional<std::string> activeApplication_; // as reported
};

} // namespace fernhollow
