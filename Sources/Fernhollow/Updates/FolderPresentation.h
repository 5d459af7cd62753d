#pragma once

#include <QDBusConnection>
#include <qcorotask.h>

#include <filesystem>

namespace fernhollow {

/// Shows `file` in its folder: marked in a file manager of the bus, else the folder in whatever opens
/// folders. A desktop with neither shows nothing, which is logged.
QCoro::Task<> showInFolder(QDBusConnection bus, std::filesystem::path file);

} // namespace fernhollow
