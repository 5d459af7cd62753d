#include "Platform/Wayland/WaylandWorkspace.h"

#include "Platform/Wayland/KeytapConnection.h"
#include "Platform/Wayland/WaylandDisplay.h"
#include "Support/ApplicationIdentity.h"

#include <string_view>
#include <unistd.h>
#include <utility>

namespace fernhollow {
namespace {

// Some compositors make up such an identifier for a window that has none.
constexpr std::string_view numberedWindow = "window:";

} // namespace

WaylandWorkspace::WaylandWorkspace(DesktopEntries entries, std::shared_ptr<KeytapConnection> connection)
    : entries_(std::move(entries)), connection_(std::move(connection)) {
    display_ = std::make_unique<WaylandDisplay>(WaylandDisplay::Handlers{
        .onActiveApplication =
            [this](const std::string& identifier) {
                WindowFacts window;
                window.windowClass = identifier;
                follow(std::move(window));
            },
        .onRepeat = [this](keytap::RepeatSettings settings) { connection_->setRepeat(settings); }});
}

WaylandWorkspace::~WaylandWorkspace() = default;

std::optional<FrontmostApplication> WaylandWorkspace::frontmostApplication() {
    return application_;
}

void WaylandWorkspace::follow(WindowFacts window) {
    if (window.windowClass.starts_with(numberedWindow)) {
        window.windowClass.clear();
    }
    if (window.windowClass == applicationIdentifier || window.kdeDesktopFile == applicationIdentifier) {
        window.process = ::getpid(); // ours, whatever the desktop entries say
    }
    auto application = resolveApplication(window, entries_);
    connection_->deliver([this, alive = std::weak_ptr(lifetime_), application = std::move(application)] {
        if (!alive.expired()) {
            application_ = application;
        }
    });
}

} // namespace fernhollow
