#pragma once

#include "Updates/AppcastItem.h"

#include <qcorotask.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace fernhollow {

enum class UpdateChoice { install, later, skip };

/// The windows of an update, as the updater sees them. One thread, that of the windows. A question whose
/// window is closed is answered with "later" or not at all; dismiss() answers every open question so.
class UserDriver {
public:
    virtual ~UserDriver() = default;

    /// Whether to look for updates once a day; asked at the second start. Absent when the window was closed
    /// without a choice, which the end of the program does too.
    virtual QCoro::Task<std::optional<bool>> askPermission() = 0;

    /// A check that the person started is under way; `cancel` cancels it.
    virtual void showChecking(std::function<void()> cancel) = 0;

    /// Offers the release with its notes. Without `canInstall` nothing but to read it and close. A release
    /// that a scheduled check found, with `isGentle`, must not take the focus from what the person does: its
    /// window is first shown by focus().
    virtual QCoro::Task<UpdateChoice> showUpdateFound(AppcastItem item, bool canInstall, bool isGentle) = 0;

    virtual void showDownloading(AppcastItem item, std::function<void()> cancel) = 0;
    virtual void showProgress(std::uint64_t received, std::uint64_t expected) = 0;

    /// Everything is verified: install now (and relaunch), or later.
    virtual QCoro::Task<UpdateChoice> showReadyToInstall(AppcastItem item) = 0;

    /// The release is being installed, which cannot be cancelled.
    virtual void showInstalling(AppcastItem item) = 0;

    virtual void showUpToDate(std::string currentVersion) = 0;
    virtual void showError(std::string description) = 0;

    /// One sentence to read, for example after a hand-over.
    virtual void showNote(std::string text) = 0;

    /// Brings the window that is open to the front.
    virtual void focus() = 0;

    /// Closes what is open.
    virtual void dismiss() = 0;
};

} // namespace fernhollow
