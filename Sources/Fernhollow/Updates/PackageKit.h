#pragma once

#include <QDBusConnection>
#include <qcorotask.h>

#include <filesystem>

namespace fernhollow {

/// Asks PackageKit's interface for programs of the session (org.freedesktop.PackageKit.Modify2, else Modify)
/// to install a package, which it does with dialogs of its own; returns once it says that it has.
///
/// False when no service on the bus offers that. Throws UpdateError: cancelled when the person did so,
/// install when the installer failed.
QCoro::Task<bool> installWithPackageKit(QDBusConnection bus, std::filesystem::path package);

} // namespace fernhollow
