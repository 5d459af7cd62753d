#pragma once

#include "Updates/AppcastItem.h"

#include <optional>
#include <string>

namespace fernhollow {

/// Why a check begins.
enum class UpdateCheck {
    userInitiated, ///< the person asked for it
    scheduled,     ///< it was due by the schedule
};

/// Is told of the updater's progress. `error` is a sentence for the person.
class UpdaterDelegate {
public:
    virtual ~UpdaterDelegate() = default;

    /// A check is about to begin; a notification, which asks for no permission.
    virtual void mayPerform(UpdateCheck check) = 0;
    virtual void didFindValidUpdate(const AppcastItem& item) = 0;
    virtual void updaterDidNotFindUpdate(const std::string& error) = 0;
    virtual void didAbortWithError(const std::string& error) = 0;
    virtual void willDownloadUpdate(const AppcastItem& item) = 0;
    virtual void didDownloadUpdate(const AppcastItem& item) = 0;
    virtual void willInstallUpdate(const AppcastItem& item) = 0;
    /// The last call of each cycle.
    virtual void didFinishUpdateCycleFor(UpdateCheck check, const std::optional<std::string>& error) = 0;
};

/// Is told what the updater's windows do.
class UserDriverDelegate {
public:
    virtual ~UserDriverDelegate() = default;

    /// Whether releases that a scheduled check finds may be announced without taking the focus.
    virtual bool supportsGentleScheduledUpdateReminders() const = 0;
    virtual void standardUserDriverWillHandleShowingUpdate(bool handlesShowing, const AppcastItem& item) = 0;
};

} // namespace fernhollow
