#pragma once

#include "Support/Observable.h"

#include <functional>
#include <memory>

namespace fernhollow {

class UpdaterDelegate;
class UserDriverDelegate;

/// What an application holds of its updater: an updater that was started, with the windows that it needs. It
/// ends, and calls its delegates no more, with this object. Main thread only. An interface, because the model
/// that holds one has no windows and may not know of those that do.
class UpdaterController {
public:
    using Factory = std::function<std::unique_ptr<UpdaterController>(UpdaterDelegate&, UserDriverDelegate&)>;

    virtual ~UpdaterController() = default;

    /// Looks for updates now, with windows, or brings the window of what is under way to the front.
    virtual void checkForUpdates() = 0;

    /// Whether a check could begin now.
    virtual bool canCheckForUpdates() const = 0;
    [[nodiscard]] virtual Observation observeCanCheckForUpdates(std::function<void()> willChange) = 0;
};

} // namespace fernhollow
