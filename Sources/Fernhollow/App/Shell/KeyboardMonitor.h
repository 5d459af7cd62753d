#pragma once

#include "Model/KeyPressMonitor.h"
#include "Platform/EventTap.h"
#include "Support/Clock.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

namespace fernhollow {

class CountingState;
class Workspace;

/// The only source of counted key presses.
///
/// Installs the desktop's global event tap and reports, for each key-down, one press and the
/// application in front. Which key it was never gets here. Owned by AppModel; main thread only.
class KeyboardMonitor final : public KeyPressMonitor {
public:
    /// The desktop's side; all of it outlives the monitor.
    struct Sources {
        EventTapProvider& taps;
        Workspace& workspace;
        const Clock& clock;
        CountingState* state = nullptr; ///< hears whether presses can be counted, where there is one
    };

    KeyboardMonitor(Sources sources, Handlers handlers);
    ~KeyboardMonitor() override;

    /// Asks the person for permission at most once per run, and looks closely whether it was given at
    /// most every 30 seconds.
    bool start() override;
    void stop() override;

    /// The bundle identifier of this program.
    static std::string_view selfBundleId();

    /// Events handled since launch by all monitors, to thin out the log.
    static std::int64_t keyCount;

private:
    bool createTap();
    bool isTrusted();
    void handle(TapEvent event);
    ActiveAppInfo getActiveAppInfo() const;

    Sources sources_;
    std::unique_ptr<EventTap> eventTap_;
    Handlers handlers_;
    bool isMonitoring_ = false;
    bool hasPromptedForPermission_ = false;
    bool hasLoggedTapFailure_ = false; // since the last tap; each second tries again
    std::optional<Instant> lastPermissionCheck_;
};

} // namespace fernhollow
