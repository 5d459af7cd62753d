#pragma once

#include <qcorotask.h>

#include <memory>
#include <string>

namespace fernhollow {

class DownloadedUpdate;

/// Installs a verified package in place of the running program, in the way of its kind of installation.
class UpdateInstaller {
public:
    /// What follows an installation.
    enum class Outcome {
        relaunch,   ///< the new program is in place: relaunch() starts it once this one has ended
        handedOver, ///< the system's installer, or the person with the file, continues
    };

    virtual ~UpdateInstaller() = default;

    /// "appimage" or "deb"; empty for a program that was built from source, which is never replaced.
    virtual std::string packageType() const = 0;

    bool canInstall() const { return !packageType().empty(); }

    /// Throws UpdateError (install). Whether it fails or is interrupted, the old program stays in place and
    /// works.
    virtual QCoro::Task<Outcome> install(std::shared_ptr<DownloadedUpdate> update) = 0;

    /// One sentence for the person after a hand-over; empty when there is nothing to do.
    virtual std::string handOverNote() const = 0;

    /// Starts the installed program once this process has ended.
    virtual void relaunch() = 0;
};

/// The installer of the running program: an AppImage, a Debian package's, or one that cannot install.
std::unique_ptr<UpdateInstaller> makeUpdateInstaller();

} // namespace fernhollow
