#include "Platform/X11/RecordTap.h"

#include "Support/DebugLog.h"

#include <QMetaObject>
#include <xcb/xcbext.h>

#include <cstdint>
#include <cstring>
#include <utility>

namespace fernhollow {
namespace {

// The categories of a batch, as the protocol numbers them.
constexpr std::uint8_t fromServer = 0;
constexpr std::uint8_t endOfData = 5;

constexpr int eventSize = 32;

// Key codes must not linger in freed memory.
struct WipeAndFree {
    void operator()(xcb_record_enable_context_reply_t* batch) const {
        explicit_bzero(batch, sizeof(*batch) + std::size_t{batch->length} * 4);
        std::free(batch);
    }
};
using BatchPointer = std::unique_ptr<xcb_record_enable_context_reply_t, WipeAndFree>;

enum class Poll { batch, nothing, failed };

Poll poll(xcb_connection_t* data, unsigned int stream, BatchPointer& batch) {
    void* reply = nullptr;
    xcb_generic_error_t* error = nullptr;
    const bool complete = xcb_poll_for_reply(data, stream, &reply, &error) != 0;
    const XcbReply<xcb_generic_error_t> ownedError(error);
    batch.reset(static_cast<xcb_record_enable_context_reply_t*>(reply));
    return batch ? Poll::batch : complete ? Poll::failed : Poll::nothing;
}

BatchPointer wait(xcb_connection_t* data, unsigned int stream) {
    return BatchPointer(xcb_record_enable_context_reply(data, {stream}, nullptr));
}

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
    : control_(std::move(control)), data_(std::move(data)), context_(context), modifiers_(modifiers),
      callback_(std::make_shared<const EventTapProvider::Callback>(std::move(callback))),
      notifier_(
          std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(data_.get()), QSocketNotifier::Read)) {
    // Also while nothing is recorded: the server still announces each new keyboard map there.
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, &receiver_, [this] { receive(); });
}

RecordTap::~RecordTap() {
    if (destroyed_ != nullptr) {
        *destroyed_ = true;
    }
    // We may be inside its signal.
    notifier_->setEnabled(false);
    notifier_.release()->deleteLater();
    BatchPointer unread;
    while (stream_ != 0 && poll(data_.get(), stream_, unread) == Poll::batch) {
    }
    xcb_record_free_context(control_.get(), context_);
    xcb_flush(control_.get());
}

void RecordTap::setEnabled(bool enabled) {
    if (lost_ || enabled == (stream_ != 0)) {
        return;
    }
    enabled ? startRecording() : stopRecording();
}

void RecordTap::startRecording() {
    stream_ = xcb_record_enable_context(data_.get(), context_).sequence;
    // The first batch says that recording began. Should it fail instead, receive() finds out, as it finds
    // batches that came along and no longer make the socket readable.
    wait(data_.get(), stream_);
    QMetaObject::invokeMethod(&receiver_, [this] { receive(); }, Qt::QueuedConnection);
}

void RecordTap::stopRecording() {
    const unsigned int stream = std::exchange(stream_, 0);
    const XcbReply<xcb_generic_error_t> error(
        xcb_request_check(control_.get(), xcb_record_disable_context_checked(control_.get(), context_)));
    if (error) {
        return;
    }
    for (BatchPointer batch = wait(data_.get(), stream); batch && batch->category != endOfData;) {
        batch = wait(data_.get(), stream);
    }
}

void RecordTap::receive() {
    if (lost_ || destroyed_ != nullptr) {
        return;
    }
    if (!followKeyboardMap()) {
        lose();
        return;
    }
    BatchPointer batch;
    while (stream_ != 0) {
        const Poll result = poll(data_.get(), stream_, batch);
        if (result == Poll::nothing) {
            return;
        }
        if (result == Poll::failed || batch->category == endOfData) {
            lose();
            return;
        }
        std::size_t presses = countPresses(*batch);
        batch.reset();
        for (; presses > 0 && stream_ != 0; --presses) {
            if (!report(TapEvent::keyDown)) {
                return;
            }
        }
    }
}

// Every client is told of a new map, the data connection in the order of its batches. Looking for
// events is also what makes libxcb read the socket.
bool RecordTap::followKeyboardMap() {
    bool changed = false;
    while (const auto event = XcbReply<xcb_generic_event_t>(xcb_poll_for_event(data_.get()))) {
        changed = changed || (event->response_type & 0x7f) == XCB_MAPPING_NOTIFY;
    }
    if (changed) {
        if (const auto modifiers = ModifierKeys::read(control_.get())) {
            modifiers_ = *modifiers;
        }
        // Told as well, and without another use for it.
        if (!dropArrivedEvents(control_.get())) {
            return false;
        }
    }
    return xcb_connection_has_error(data_.get()) == 0;
}

std::size_t RecordTap::countPresses(const Batch& batch) const {
    if (batch.category != fromServer) {
        return 0;
    }
    // Type and key code are single bytes: the byte order of whoever was recorded does not matter.
    const std::uint8_t* event = xcb_record_enable_context_data(&batch);
    std::size_t presses = 0;
    for (int left = xcb_record_enable_context_data_length(&batch); left >= eventSize; left -= eventSize) {
        presses += (event[0] & 0x7f) == XCB_KEY_PRESS && !modifiers_.contains(event[1]) ? 1 : 0;
        event += eventSize;
    }
    return presses;
}

// False when the callback has destroyed the tap: not even a member may be touched then.
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
    lost_ = true;
    stream_ = 0;
    notifier_->setEnabled(false);
    debugLog("[EventTap] The X server ended the recording of key presses");
    report(TapEvent::disabled);
}

} // namespace fernhollow
