#pragma once

#include <span>
#include <string>
#include <string_view>

namespace fernhollow {

/// What a desktop entry says that tells whose window one is. Texts are as in the file, escapes resolved.
struct DesktopEntryFile {
    std::string name;        ///< in the best of the wanted locales
    std::string windowClass; ///< `StartupWMClass`
    std::string exec;
    bool application = false; ///< of the type Application
    bool shown = true;        ///< not `NoDisplay`
    bool hidden = false;      ///< as good as deleted
    bool inTerminal = false;
    bool operator==(const DesktopEntryFile&) const = default;
};

/// Reads the main group of `text`; `locales` are those wanted for the name, best first.
DesktopEntryFile parseDesktopEntry(std::string_view text, std::span<const std::string> locales);

} // namespace fernhollow
