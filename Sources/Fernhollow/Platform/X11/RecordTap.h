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

/// The event tap of an X11 display, over the RECORD extension. It reports the key-down events of
/// every client, including each auto-repeat, synthetic presses, and presses during another client's
/// keyboard grab.
///
/// The control connection owns the record context. The data connection streams the events and can ask
/// nothing else meanwhile. Used on the main thread. Its owner, KeyboardMonitor, may destroy it from
/// inside the callback.
class RecordTap final : public EventTap {
public:
    /// A disabled tap that takes over `control`; null when the server refuses.
    static std::unique_ptr<RecordTap> create(XcbConnection control, EventTapProvider::Callback callback);

    RecordTap(const RecordTap&) = delete;
    RecordTap& operator=(const RecordTap&) = delete;
    ~RecordTap() override;

    /// Takes effect before it returns: every later press is reported, or none is.
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
    QObject receiver_;          ///< context of the callbacks to this object, which end with it
    bool* destroyed_ = nullptr; ///< set to true by the destructor, for a call in progress
    bool enabled_ = false;
    bool lost_ = false;
};

} // namespace fernhollow
