#pragma once

#include <optional>
#include <string>

namespace fernhollow {

/// The application whose window has the keyboard, as its desktop entry describes it.
struct FrontmostApplication {
    std::optional<std::string>
        bundleIdentifier;                     ///< desktop-file id without ".desktop", else the window class
    std::optional<std::string> localizedName; ///< `Name` in the user's language
    bool operator==(const FrontmostApplication&) const = default;
};

/// What the desktop says of the applications that run. Used on the main thread only.
class Workspace {
public:
    virtual ~Workspace() = default;

    /// Nothing when no window is in front or the desktop does not tell. Never waits for the desktop
    /// while the same window stays in front.
    virtual std::optional<FrontmostApplication> frontmostApplication() = 0;
};

/// For a session that does not tell which application is in front.
class UnknownWorkspace final : public Workspace {
public:
    std::optional<FrontmostApplication> frontmostApplication() override { return std::nullopt; }
};

} // namespace fernhollow
