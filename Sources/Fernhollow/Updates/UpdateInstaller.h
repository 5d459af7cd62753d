#pragma once

#include <qcorotask.h>

#include <memory>
#include <string>

namespace fernhollow {

class DownloadedUpdate;

/// Puts a verified package in the place of the running program, in the way of its kind of installation.
class UpdateInstaller {
public:
    /// What follows an installation.
    enum class Outcome {
        relaunch,   ///< the new program is in place: relaunch() starts it once this one has ended
        handedOver, ///< the system's installer, or the person in the folder, goes on from here
    };

    virtual ~UpdateInstaller() = default;

    /// "appimage" or "deb"; empty for a program that was built from source, which is never replaced.
    virtual std::string packageType() const = 0;

    bool canInstall() const { return !packageType().empty(); }

    /// Throws UpdateError (install); the old program is then in place and works. Interrupted at any point, it
    /// is too.
    virtual QCoro::Task<Outcome> install(std::shared_ptr<DownloadedUpdate> update) = 0;

    /// What the person has to know after a hand-over, one sentence; empty when nothing.
    virtual std::string handOverNote() const = 0;

    /// Starts the installed program once this process has ended.
    virtual void relaunch() = 0;
};

/// The installer of the running program: an AppImage, a Debian package's, or one that cannot install.
std::unique_ptr<UpdateInstaller> makeUpdateInstaller();

} // namespace fernhollow
