#pragma once

#include "Platform/Applications/ApplicationResolver.h"
#include "Platform/Applications/DesktopEntries.h"
#include "Platform/Workspace.h"

#include <memory>
#include <optional>

namespace fernhollow {

class KeytapConnection;
class WaylandDisplay;

/// The frontmost application of a Wayland session, where the compositor reports it; otherwise none.
///
/// The key-blind service gathers presses for up to 100 ms. When another application comes to the front, the
/// presses until then are still the old one's: the service is asked for them, and the new application is
/// named from its answer on. Main thread only.
class WaylandWorkspace : public Workspace {
public:
    WaylandWorkspace(DesktopEntries entries, std::shared_ptr<KeytapConnection> connection);
    ~WaylandWorkspace() override;

    std::optional<FrontmostApplication> frontmostApplication() override;

protected:
    /// This window came to the front; nothing of a window means that none is there.
    void follow(WindowFacts window);

private:
    DesktopEntries entries_;
    std::shared_ptr<KeytapConnection> connection_;
    std::optional<FrontmostApplication> application_;
    std::shared_ptr<int> lifetime_ = std::make_shared<int>(); ///< ends with us, for answers that come later
    std::unique_ptr<WaylandDisplay> display_;
};

} // namespace fernhollow
