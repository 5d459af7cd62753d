#pragma once

#include "Platform/EventTap.h"
#include "Platform/X11/ModifierKeys.h"
#include "Platform/X11/RecordStream.h"
#include "Platform/X11/XcbHandles.h"

#include <QObject>
#include <QSocketNotifier>
#include <xcb/record.h>

#include <memory>

namespace fernhollow {

/// The event tap of an X11 display, over the RECORD extension: key-down events of every client, each
/// auto-repeat, synthetic presses and presses under another client's keyboard grab included.
///
/// A record context belongs to the control connection and streams over the data connection, which can
/// ask nothing else meanwhile. Used on the main thread, owned by who counts; the owner may destroy it
/// from inside its callback.
class RecordTap final : public EventTap {
public:
    /// A disabled tap that takes over `control`; null when the server refuses.
    static std::unique_ptr<RecordTap> create(XcbConnection control, EventTapProvider::Callback callback);

    RecordTap(const RecordTap&) = delete;
    RecordTap& operator=(const RecordTap&) = delete;
    ~RecordTap() override;

    /// When it returns, presses from then on are reported, or none any more.
    void setEnabled(bool enabled) override;

private:
    RecordTap(XcbConnection control, XcbConnection data, xcb_record_context_t context, ModifierKeys modifiers,
              EventTapProvider::Callback callback);

    bool waitFor(RecordStream::Item item);
    void receive();
    void passItems();
    bool followKeyboardMap();
    bool report(TapEvent event);
    void lose();

    XcbConnection control_;
    xcb_record_context_t context_;
    RecordStream stream_;
    ModifierKeys modifiers_;
    std::shared_ptr<const EventTapProvider::Callback> callback_; ///< shared with a call in progress
    std::unique_ptr<QSocketNotifier> notifier_;
    QObject receiver_;          ///< what calls us back, until it is destroyed with us
    bool* destroyed_ = nullptr; ///< tells a call in progress that the tap is gone
    bool enabled_ = false;
    bool lost_ = false;
};

} // namespace fernhollow
