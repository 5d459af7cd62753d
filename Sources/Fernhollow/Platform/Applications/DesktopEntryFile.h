#pragma once

#include <span>
#include <string>
#include <string_view>

namespace fernhollow {

/// The fields of a desktop entry that help to recognise an application's windows. Texts are as in the file,
/// with escapes resolved.
struct DesktopEntryFile {
    std::string name;        ///< in the best of the wanted locales
    std::string windowClass; ///< `StartupWMClass`
    std::string exec;
    bool application = false; ///< its `Type` is Application
    bool shown = true;        ///< menus show it: not `NoDisplay`
    bool hidden = false;      ///< `Hidden`: counts as deleted
    bool inTerminal = false;  ///< `Terminal`: runs in a terminal's window
    bool operator==(const DesktopEntryFile&) const = default;
};

/// Reads the main group of `text`. `locales` are those for the name, best first.
DesktopEntryFile parseDesktopEntry(std::string_view text, std::span<const std::string> locales);

} // namespace fernhollow
