#pragma once

#include <QDBusConnection>
#include <qcorotask.h>

#include <filesystem>

namespace fernhollow {

/// Asks PackageKit's session service (org.freedesktop.PackageKit.Modify2, else Modify) to install a package.
/// The service shows dialogs of its own. Returns true once it reports that the package is installed.
///
/// Returns false when there is no such service on the bus. Throws UpdateError: cancelled when the
/// person cancelled, install when the installer failed.
QCoro::Task<bool> installWithPackageKit(QDBusConnection bus, std::filesystem::path package);

} // namespace fernhollow
