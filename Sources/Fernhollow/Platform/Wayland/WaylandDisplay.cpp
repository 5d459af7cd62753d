#include "Platform/Wayland/WaylandDisplay.h"

#include "Support/DebugLog.h"
#include "Support/FileDescriptor.h"

#include <QByteArray>

#include <cerrno>
#include <string_view>
#include <utility>
#include <wayland-client.h>

namespace fernhollow {
namespace {

constexpr std::uint32_t seatVersion = 4; // the first whose keyboards tell how keys repeat

// By name, because without one the library takes over the connection in WAYLAND_SOCKET, which is the
// toolkit's.
wl_display* connect() {
    const QByteArray name = qgetenv("WAYLAND_DISPLAY");
    return wl_display_connect(name.isEmpty() ? "wayland-0" : name.constData());
}

} // namespace

struct WaylandDisplay::Events {
    static WaylandDisplay& self(void* data) { return *static_cast<WaylandDisplay*>(data); }

    static void global(void* data, wl_registry* registry, std::uint32_t name, const char* interface,
                       std::uint32_t version) {
        if (std::string_view(interface) == ForeignToplevels::interfaceName) {
            self(data).toplevels_ = std::make_unique<ForeignToplevels>(registry, name);
        } else if (std::string_view(interface) == wl_seat_interface.name && !self(data).seat_ &&
                   version >= seatVersion) {
            self(data).seat_ =
                static_cast<wl_seat*>(wl_registry_bind(registry, name, &wl_seat_interface, seatVersion));
            static const wl_seat_listener listener{capabilities, ignoreName};
            wl_seat_add_listener(self(data).seat_, &listener, data);
        }
    }
    static void globalRemoved(void* /*data*/, wl_registry* /*registry*/, std::uint32_t /*name*/) {}

    static void ignoreName(void* /*data*/, wl_seat* /*seat*/, const char* /*name*/) {}
    static void capabilities(void* data, wl_seat* seat, std::uint32_t capabilities) {
        if ((capabilities & WL_SEAT_CAPABILITY_KEYBOARD) == 0 || self(data).keyboard_) {
            return;
        }
        static const wl_keyboard_listener listener{keymap, enter, leave, key, modifiers, repeat};
        self(data).keyboard_ = wl_seat_get_keyboard(seat);
        wl_keyboard_add_listener(self(data).keyboard_, &listener, data);
    }

    static void keymap(void* /*data*/, wl_keyboard* /*keyboard*/, std::uint32_t /*format*/, int file,
                       std::uint32_t /*size*/) {
        const FileDescriptor unused(file); // to close it
    }
    // The next four never arrive: no window is ours.
    static void enter(void* /*data*/, wl_keyboard* /*keyboard*/, std::uint32_t /*serial*/,
                      wl_surface* /*surface*/, wl_array* /*keys*/) {}
    static void leave(void* /*data*/, wl_keyboard* /*keyboard*/, std::uint32_t /*serial*/,
                      wl_surface* /*surface*/) {}
    static void key(void* /*data*/, wl_keyboard* /*keyboard*/, std::uint32_t /*serial*/,
                    std::uint32_t /*time*/, std::uint32_t /*key*/, std::uint32_t /*state*/) {}
    static void modifiers(void* /*data*/, wl_keyboard* /*keyboard*/, std::uint32_t /*serial*/,
                          std::uint32_t /*depressed*/, std::uint32_t /*latched*/, std::uint32_t /*locked*/,
                          std::uint32_t /*group*/) {}
    static void repeat(void* data, wl_keyboard* /*keyboard*/, std::int32_t rate, std::int32_t delay) {
        if (rate >= 0 && delay >= 0) {
            self(data).handlers_.onRepeat(
                {.delay = static_cast<std::uint32_t>(delay), .rate = static_cast<std::uint32_t>(rate)});
        }
    }
};

WaylandDisplay::WaylandDisplay(Handlers handlers)
    : handlers_(std::move(handlers)), display_(connect(), wl_display_disconnect) {
    if (!display_) {
        debugLog("[Workspace] The compositor cannot be reached; applications are unknown");
        return;
    }
    registry_ = wl_display_get_registry(display_.get());
    static const wl_registry_listener listener{Events::global, Events::globalRemoved};
    wl_registry_add_listener(registry_, &listener, this);
    wl_display_flush(display_.get());
    notifier_ = std::make_unique<QSocketNotifier>(wl_display_get_fd(display_.get()), QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(), [this] { read(); });
}

WaylandDisplay::~WaylandDisplay() {
    notifier_.reset();
    toplevels_.reset();
    if (keyboard_ != nullptr) {
        wl_keyboard_destroy(keyboard_);
    }
    if (seat_ != nullptr) {
        wl_seat_destroy(seat_);
    }
    if (registry_ != nullptr) {
        wl_registry_destroy(registry_);
    }
}

void WaylandDisplay::read() {
    while (wl_display_prepare_read(display_.get()) != 0) {
        wl_display_dispatch_pending(display_.get());
    }
    const bool isRead = wl_display_read_events(display_.get()) == 0;
    const bool isDispatched = isRead && wl_display_dispatch_pending(display_.get()) >= 0;
    if (!isDispatched || (wl_display_flush(display_.get()) < 0 && errno != EAGAIN)) {
        notifier_->setEnabled(false);
        debugLog("[Workspace] The compositor ended the connection; applications are unknown");
        report({});
        return;
    }
    if (toplevels_) {
        report(toplevels_->activeApplication());
    }
}

// After all that arrived together: between two windows there is a moment without an active one.
void WaylandDisplay::report(const std::string& application) {
    if (activeApplication_ != application) {
        activeApplication_ = application;
        handlers_.onActiveApplication(application);
    }
}

} // namespace fernhollow
