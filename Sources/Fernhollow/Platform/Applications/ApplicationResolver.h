#pragma once

#include "Platform/Applications/Process.h"
#include "Platform/Workspace.h"

#include <functional>
#include <optional>
#include <string>
#include <sys/types.h>

namespace fernhollow {

class DesktopEntries;

/// What a window says of the program that it belongs to; empty where it says nothing.
struct WindowFacts {
    std::string gtkApplicationId; ///< `_GTK_APPLICATION_ID`
    std::string kdeDesktopFile;   ///< `_KDE_NET_WM_DESKTOP_FILE`
    std::string instance;         ///< the first half of `WM_CLASS`
    std::string windowClass;      ///< the second
    pid_t process = 0;            ///< `_NET_WM_PID` when the program runs on this machine, else 0
    bool operator==(const WindowFacts&) const = default;
};

using ProcessLookup = std::function<std::optional<Process>(pid_t)>;

/// The application that a window belongs to; nothing when the window says nothing. Our own windows are
/// ours by their process, whatever they are called.
std::optional<FrontmostApplication> resolveApplication(const WindowFacts& window, DesktopEntries& entries,
                                                       const ProcessLookup& lookup = readProcess);

} // namespace fernhollow
