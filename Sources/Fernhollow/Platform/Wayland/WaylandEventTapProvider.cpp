#include "Platform/Wayland/WaylandEventTapProvider.h"

#include "Support/DebugLog.h"

#include <utility>

namespace fernhollow {
namespace {

TrustProblem problem() {
    return {"This is a Wayland session, in which only a part of the key presses can be seen, so Fernhollow "
            "does not count.",
            "To count your presses, log out and choose the desktop's X11 session (often called Xorg) on the "
            "login screen."};
}

} // namespace

WaylandEventTapProvider::WaylandEventTapProvider(Prompt prompt) : prompt_(std::move(prompt)) {}

bool WaylandEventTapProvider::isProcessTrusted(bool prompting) {
    if (!std::exchange(isLogged_, true)) {
        debugLog("[EventTap] " + problem().missing);
    }
    if (prompting && prompt_) {
        prompt_(problem());
    }
    return false;
}

std::unique_ptr<EventTap> WaylandEventTapProvider::createTap(Callback /*callback*/) {
    return nullptr;
}

} // namespace fernhollow
