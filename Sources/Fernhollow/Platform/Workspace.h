#pragma once

#include <optional>
#include <string>

namespace fernhollow {

/// The application whose window has the keyboard.
struct FrontmostApplication {
    std::optional<std::string>
        bundleIdentifier;                     ///< desktop-file id without ".desktop", else the window class
    std::optional<std::string> localizedName; ///< `Name` in the user's language
    bool operator==(const FrontmostApplication&) const = default;
};

/// What the desktop says about the running applications. Main thread only.
class Workspace {
public:
    virtual ~Workspace() = default;

    /// The application in front; nothing when no window is in front or the desktop does not say. It
    /// never waits for the desktop while the same window stays in front.
    virtual std::optional<FrontmostApplication> frontmostApplication() = 0;
};

/// The workspace of a session that does not say which application is in front.
class UnknownWorkspace final : public Workspace {
public:
    std::optional<FrontmostApplication> frontmostApplication() override { return std::nullopt; }
};

} // namespace fernhollow
