#include "Platform/Wayland/WaylandWorkspace.h"

#include "Platform/Applications/ApplicationResolver.h"
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

WindowFacts factsOf(const std::string& identifier) {
    if (std::string_view(identifier).starts_with(numberedWindow)) {
        return {};
    }
    WindowFacts facts;
    facts.windowClass = identifier;
    facts.process = identifier == applicationIdentifier ? ::getpid() : 0;
    return facts;
}

} // namespace

WaylandWorkspace::WaylandWorkspace(DesktopEntries entries, std::shared_ptr<KeytapConnection> connection)
    : entries_(std::move(entries)), connection_(std::move(connection)) {
    display_ = std::make_unique<WaylandDisplay>(WaylandDisplay::Handlers{
        .onActiveApplication = [this](const std::string& identifier) { follow(identifier); },
        .onRepeat = [this](keytap::RepeatSettings settings) { connection_->setRepeat(settings); }});
}

WaylandWorkspace::~WaylandWorkspace() = default;

std::optional<FrontmostApplication> WaylandWorkspace::frontmostApplication() {
    return application_;
}

void WaylandWorkspace::follow(const std::string& identifier) {
    auto application = resolveApplication(factsOf(identifier), entries_);
    connection_->deliver([this, alive = std::weak_ptr(lifetime_), application = std::move(application)] {
        if (!alive.expired()) {
            application_ = application;
        }
    });
}

} // namespace fernhollow
