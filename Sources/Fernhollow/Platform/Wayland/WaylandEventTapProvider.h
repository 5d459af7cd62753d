#pragma once

#include "Platform/EventTap.h"

namespace fernhollow {

/// Refuses to count in a Wayland session: its X server sees the presses in X11 windows alone, and the
/// compositor tells nobody of the others. Main thread only.
class WaylandEventTapProvider final : public EventTapProvider {
public:
    explicit WaylandEventTapProvider(Prompt prompt);

    bool isProcessTrusted(bool prompting) override;
    std::unique_ptr<EventTap> createTap(Callback callback) override;

private:
    Prompt prompt_;
    bool isLogged_ = false;
};

} // namespace fernhollow
