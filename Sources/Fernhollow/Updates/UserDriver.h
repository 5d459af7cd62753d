#pragma once

#include "Updates/AppcastItem.h"

#include <qcorotask.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace fernhollow {

/// The person's answer to an offer.
enum class UpdateChoice {
    install, ///< now
    later,   ///< the next check offers it again
    skip,    ///< scheduled checks do not offer this release again
};

/// The windows of an update, as the updater uses them. Main thread only. Closing the window of a
/// question answers it with "later" or, for askPermission(), with nothing; dismiss() does the same for
/// every open question.
class UserDriver {
public:
    virtual ~UserDriver() = default;

    /// Asks whether to look for updates once a day; the second start does so. Absent when the window was
    /// closed without a choice, by the person or by the end of the program.
    virtual QCoro::Task<std::optional<bool>> askPermission() = 0;

    /// Shows that a check that the person started is under way; `cancel` cancels it.
    virtual void showChecking(std::function<void()> cancel) = 0;

    /// Offers the release with its notes. Without `canInstall` the person can only read them. With
    /// `isGentle`, for a release that a scheduled check found, no window may take the focus from the
    /// person's work: it first appears with focus().
    virtual QCoro::Task<UpdateChoice> showUpdateFound(AppcastItem item, bool canInstall, bool isGentle) = 0;

    virtual void showDownloading(AppcastItem item, std::function<void()> cancel) = 0;
    virtual void showProgress(std::uint64_t received, std::uint64_t expected) = 0;

    /// Asks whether to install the verified release now (and relaunch), or later.
    virtual QCoro::Task<UpdateChoice> showReadyToInstall(AppcastItem item) = 0;

    /// Shows that the release is being installed, which cannot be cancelled.
    virtual void showInstalling(AppcastItem item) = 0;

    virtual void showUpToDate(std::string currentVersion) = 0;
    virtual void showError(std::string description) = 0;

    /// Shows one sentence, for example after a hand-over.
    virtual void showNote(std::string text) = 0;

    /// Brings the open window to the front.
    virtual void focus() = 0;

    /// Closes the open window.
    virtual void dismiss() = 0;
};

} // namespace fernhollow
