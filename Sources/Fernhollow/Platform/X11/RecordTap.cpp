#include "Platform/X11/RecordTap.h"

#include "Support/DebugLog.h"

#include <QTimer>

#include <chrono>
#include <utility>

namespace fernhollow {
namespace {

using Item = RecordStream::Item;

// The server answers within microseconds, unless another program has grabbed it.
constexpr std::chrono::seconds patience{5};

bool createContext(xcb_connection_t* control, xcb_record_context_t context) {
    const xcb_record_client_spec_t everyone = XCB_RECORD_CS_ALL_CLIENTS;
    xcb_record_range_t range{};
    range.device_events = {XCB_KEY_PRESS, XCB_KEY_PRESS};
    const XcbReply<xcb_generic_error_t> error(xcb_request_check(
        control, xcb_record_create_context_checked(control, context, 0, 1, 1, &everyone, &range)));
    return !error && xcb_connection_has_error(control) == 0;
}

} // namespace

std::unique_ptr<RecordTap> RecordTap::create(XcbConnection control, EventTapProvider::Callback callback) {
    XcbConnection data = connectToDisplay();
    if (!control || !data) {
        return nullptr;
    }
    for (xcb_connection_t* connection : {control.get(), data.get()}) {
        const xcb_query_extension_reply_t* record = xcb_get_extension_data(connection, &xcb_record_id);
        if (record == nullptr || record->present == 0) {
            return nullptr;
        }
    }
    const xcb_record_context_t context = xcb_generate_id(control.get());
    if (!createContext(control.get(), context)) {
        return nullptr;
    }
    const auto modifiers = ModifierKeys::read(control.get());
    if (!modifiers) {
        return nullptr;
    }
    return std::unique_ptr<RecordTap>(
        new RecordTap(std::move(control), std::move(data), context, *modifiers, std::move(callback)));
}

RecordTap::RecordTap(XcbConnection control, XcbConnection data, xcb_record_context_t context,
                     ModifierKeys modifiers, EventTapProvider::Callback callback)
    : control_(std::move(control)), context_(context), stream_(std::move(data)), modifiers_(modifiers),
      callback_(std::make_shared<const EventTapProvider::Callback>(std::move(callback))),
      notifier_(std::make_unique<QSocketNotifier>(stream_.socket(), QSocketNotifier::Read)) {
    // The socket is read even while nothing is recorded, because the server still announces each new keyboard
    // map there.
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, &receiver_, [this] { receive(); });
}

RecordTap::~RecordTap() {
    if (destroyed_ != nullptr) {
        *destroyed_ = true;
    }
    // The notifier's signal may be running.
    notifier_->setEnabled(false);
    notifier_.release()->deleteLater();
    xcb_record_free_context(control_.get(), context_);
    xcb_flush(control_.get());
}

void RecordTap::setEnabled(bool enabled) {
    if (lost_ || enabled == enabled_) {
        return;
    }
    enabled_ = enabled;
    if (enabled) {
        const bool started = stream_.enable(context_) && waitFor(Item::started);
        // Items that arrived with the start no longer make the socket readable, so they are passed
        // later. The owner does not expect to be called from inside this function.
        QTimer::singleShot(0, &receiver_, [this, started] { started ? passItems() : lose(); });
        return;
    }
    xcb_record_disable_context(control_.get(), context_);
    xcb_flush(control_.get());
    if (!waitFor(Item::ended)) {
        debugLog("[EventTap] The X server did not confirm the end of the recording");
    }
}

// Presses before the wanted item are not reported.
bool RecordTap::waitFor(Item wanted) {
    while (true) {
        const Item item = stream_.next(modifiers_);
        if (item == wanted) {
            return true;
        }
        if (item == Item::ended || (item == Item::mapChanged && !followKeyboardMap())) {
            return false;
        }
        if (item == Item::nothing) {
            if (!stream_.waitForMore(patience)) {
                return false;
            }
            stream_.receive();
        }
    }
}

void RecordTap::receive() {
    if (lost_ || destroyed_ != nullptr) {
        return;
    }
    stream_.receive();
    passItems();
}

void RecordTap::passItems() {
    while (!lost_ && destroyed_ == nullptr) {
        switch (stream_.next(modifiers_)) {
        case Item::nothing:
            return;
        case Item::started:
            break;
        case Item::press:
            if (enabled_ && !report(TapEvent::keyDown)) {
                return;
            }
            break;
        case Item::mapChanged:
            if (followKeyboardMap()) {
                break;
            }
            [[fallthrough]];
        case Item::ended:
            lose();
            return;
        }
    }
}

// The server announces a new map to every client; on the data connection in order with the presses.
bool RecordTap::followKeyboardMap() {
    if (const auto modifiers = ModifierKeys::read(control_.get())) {
        modifiers_ = *modifiers;
    }
    // The control connection gets the announcement as well and has no use for it.
    return dropArrivedEvents(control_.get());
}

// False when the callback has destroyed the tap: then no member may be touched.
bool RecordTap::report(TapEvent event) {
    bool destroyed = false;
    destroyed_ = &destroyed;
    const auto callback = callback_;
    (*callback)(event);
    if (!destroyed) {
        destroyed_ = nullptr;
    }
    return !destroyed;
}

void RecordTap::lose() {
    if (std::exchange(lost_, true)) {
        return;
    }
    notifier_->setEnabled(false);
    debugLog("[EventTap] The X server ended the recording of key presses");
    report(TapEvent::disabled);
}

} // namespace fernhollow
