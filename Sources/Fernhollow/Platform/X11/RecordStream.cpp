#include "Platform/X11/RecordStream.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>

namespace fernhollow {
namespace {

// Values of a message's first byte, besides the types of events.
constexpr std::uint8_t errorMessage = 0;
constexpr std::uint8_t replyMessage = 1;

// The categories of a reply, as the protocol numbers them.
constexpr std::uint8_t fromServer = 0;
constexpr std::uint8_t startOfData = 4;
constexpr std::uint8_t endOfData = 5;

} // namespace

RecordStream::RecordStream(XcbConnection data)
    : data_(std::move(data)), socket_(xcb_get_file_descriptor(data_.get())) {}

RecordStream::~RecordStream() {
    explicit_bzero(buffer_.data(), buffer_.size());
}

// Written without libxcb, which may read from the socket while it writes.
bool RecordStream::enable(xcb_record_context_t context) {
    const xcb_query_extension_reply_t* record = xcb_get_extension_data(data_.get(), &xcb_record_id);
    if (closed_ || record == nullptr || record->present == 0) {
        return false;
    }
    xcb_record_enable_context_request_t request{};
    request.major_opcode = record->major_opcode;
    request.minor_opcode = XCB_RECORD_ENABLE_CONTEXT;
    request.length = sizeof(request) / 4;
    request.context = context;
    return ::send(socket_, &request, sizeof(request), MSG_NOSIGNAL) == sizeof(request);
}

void RecordStream::receive() {
    if (begin_ > 0) {
        std::copy(buffer_.begin() + static_cast<std::ptrdiff_t>(begin_),
                  buffer_.begin() + static_cast<std::ptrdiff_t>(end_), buffer_.begin());
        const std::size_t left = end_ - begin_;
        explicit_bzero(buffer_.data() + left, begin_);
        begin_ = 0;
        end_ = left;
    }
    if (end_ == buffer_.size()) {
        return;
    }
    const ssize_t size = ::recv(socket_, buffer_.data() + end_, buffer_.size() - end_, MSG_DONTWAIT);
    if (size > 0) {
        end_ += static_cast<std::size_t>(size);
    } else {
        closed_ = size == 0 || (errno != EAGAIN && errno != EINTR);
    }
}

RecordStream::Item RecordStream::next(const ModifierKeys& modifiers) {
    while (begin_ < end_) {
        if (bodyLeft_ == 0 || (bodyIsEvents_ && bodyLeft_ >= unit)) {
            if (end_ - begin_ < unit) {
                break;
            }
            const Item item = bodyLeft_ == 0 ? passHead() : passRecorded(modifiers);
            if (item != Item::nothing) {
                return item;
            }
        } else {
            const std::size_t passed = std::min(bodyLeft_, end_ - begin_);
            bodyLeft_ -= passed;
            wipe(passed);
        }
    }
    if (begin_ == end_) {
        begin_ = 0;
        end_ = 0;
    }
    return closed_ ? Item::ended : Item::nothing;
}

RecordStream::Item RecordStream::passHead() {
    xcb_record_enable_context_reply_t head{}; // a long event has its length in the same place
    static_assert(sizeof(head) == unit);
    std::memcpy(&head, buffer_.data() + begin_, unit);
    wipe(unit);
    if (head.response_type == errorMessage) {
        return Item::ended;
    }
    const bool isReply = head.response_type == replyMessage;
    const int type = head.response_type & 0x7f;
    bodyLeft_ = isReply || type == XCB_GE_GENERIC ? std::size_t{head.length} * 4 : 0;
    bodyIsEvents_ = isReply && head.category == fromServer;
    if (isReply) {
        return head.category == startOfData ? Item::started
               : head.category == endOfData ? Item::ended
                                            : Item::nothing;
    }
    return type == XCB_MAPPING_NOTIFY ? Item::mapChanged : Item::nothing;
}

// Type and key code are single bytes, so the byte order of the recorded client does not matter.
RecordStream::Item RecordStream::passRecorded(const ModifierKeys& modifiers) {
    const std::uint8_t* event = buffer_.data() + begin_;
    const bool isPress = (event[0] & 0x7f) == XCB_KEY_PRESS && !modifiers.contains(event[1]);
    bodyLeft_ -= unit;
    wipe(unit);
    return isPress ? Item::press : Item::nothing;
}

void RecordStream::wipe(std::size_t count) {
    explicit_bzero(buffer_.data() + begin_, count);
    begin_ += count;
}

bool RecordStream::waitForMore(std::chrono::milliseconds atMost) const {
    pollfd ready{socket_, POLLIN, 0};
    return ::poll(&ready, 1, static_cast<int>(atMost.count())) > 0;
}

} // namespace fernhollow
