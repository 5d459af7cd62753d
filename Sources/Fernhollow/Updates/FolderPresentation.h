#pragma once

#include <QDBusConnection>
#include <qcorotask.h>

#include <filesystem>

namespace fernhollow {

/// Shows `file` in its folder: marked, by a file manager on the bus (org.freedesktop.FileManager1),
/// else the folder alone, by xdg-open. A desktop with neither shows nothing, which is logged.
QCoro::Task<> showInFolder(QDBusConnection bus, std::filesystem::path file);

} // namespace fernhollow
