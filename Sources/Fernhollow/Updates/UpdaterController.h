#pragma once

#include "Support/Observable.h"

#include <functional>
#include <memory>

namespace fernhollow {

class UpdaterDelegate;
class UserDriverDelegate;

/// A running updater with its windows, as the application holds it. Destroying it ends the updater and all
/// calls to its delegates. Main thread only. It is an interface, because the model that holds one must not
/// depend on windows.
class UpdaterController {
public:
    using Factory = std::function<std::unique_ptr<UpdaterController>(UpdaterDelegate&, UserDriverDelegate&)>;

    virtual ~UpdaterController() = default;

    /// Looks for updates now, with windows. If a check is under way, brings its window to the front.
    virtual void checkForUpdates() = 0;

    /// Whether a check could begin now.
    virtual bool canCheckForUpdates() const = 0;
    [[nodiscard]] virtual Observation observeCanCheckForUpdates(std::function<void()> willChange) = 0;
};

} // namespace fernhollow
