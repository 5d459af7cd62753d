#pragma once

#include "Platform/Applications/Process.h"
#include "Platform/Workspace.h"

#include <functional>
#include <optional>
#include <string>
#include <sys/types.h>

namespace fernhollow {

class DesktopEntries;

/// What a window's properties say about its program; empty where they say nothing.
struct WindowFacts {
    std::string gtkApplicationId; ///< `_GTK_APPLICATION_ID`
    std::string kdeDesktopFile;   ///< `_KDE_NET_WM_DESKTOP_FILE`
    std::string instance;         ///< the first half of `WM_CLASS`
    std::string windowClass;      ///< the second
    pid_t process = 0;            ///< `_NET_WM_PID` if the program runs on this machine, else 0
    bool operator==(const WindowFacts&) const = default;
};

using ProcessLookup = std::function<std::optional<Process>(pid_t)>;

/// The application that a window belongs to; nothing when its properties say nothing. Fernhollow's own
/// windows are recognised by their process, whatever they are called.
std::optional<FrontmostApplication> resolveApplication(const WindowFacts& window, DesktopEntries& entries,
                                                       const ProcessLookup& lookup = readProcess);

} // namespace fernhollow
