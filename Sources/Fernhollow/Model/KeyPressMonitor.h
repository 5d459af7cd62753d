#pragma once

#include "Model/ActiveAppInfo.h"

#include <functional>
#include <memory>

namespace fernhollow {

/// The counting model's view of the keyboard: something that reports presses while it runs.
class KeyPressMonitor {
public:
    struct Handlers {
        std::function<void(const ActiveAppInfo&)> onKeyPress; ///< once per press
        std::function<void()> onStopped;                      ///< the desktop ended the monitoring
    };
    using Factory = std::function<std::unique_ptr<KeyPressMonitor>(Handlers)>;

    virtual ~KeyPressMonitor() = default;

    /// True when presses are reported from now on. May be called while it runs.
    virtual bool start() = 0;
    virtual void stop() = 0;
};

} // namespace fernhollow
