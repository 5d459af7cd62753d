#include "App/Shell/KeyboardMonitor.h"

#include "App/Shell/CountingState.h"
#include "Platform/Workspace.h"
#include "Support/ApplicationIdentity.h"
#include "Support/DebugLog.h"

#include <cstdio>
#include <string>
#include <utility>

namespace fernhollow {
namespace {

using namespace std::chrono_literals;

// The refresh asks every second; the full question, which may prompt, is put less often.
constexpr auto permissionCheckInterval = 30s;

constexpr const char* unknownBundleId = "unknown";

} // namespace

std::int64_t KeyboardMonitor::keyCount = 0;

KeyboardMonitor::KeyboardMonitor(Sources sources, Handlers handlers)
    : sources_(sources), handlers_(std::move(handlers)) {}

KeyboardMonitor::~KeyboardMonitor() {
    stop();
}

std::string_view KeyboardMonitor::selfBundleId() {
    return applicationIdentifier;
}

bool KeyboardMonitor::start() {
    if (isMonitoring_) {
        return true;
    }
    const bool hasTap = isTrusted() && createTap();
    if (sources_.state) {
        hasTap ? sources_.state->started() : sources_.state->startFailed();
    }
    return hasTap;
}

bool KeyboardMonitor::createTap() {
    auto tap = sources_.taps.createTap([this](TapEvent event) { handle(event); });
    if (!tap) {
        if (!std::exchange(hasLoggedTapFailure_, true)) {
            debugLog("[KeyboardMonitor] Failed to create event tap even with permission");
        }
        return false;
    }
    hasLoggedTapFailure_ = false;
    eventTap_ = std::move(tap);
    eventTap_->setEnabled(true);
    isMonitoring_ = true;
    debugLog("[KeyboardMonitor] Started successfully");
    return true;
}

bool KeyboardMonitor::isTrusted() {
    const Instant now = sources_.clock.now();
    if (lastPermissionCheck_ && now - *lastPermissionCheck_ < permissionCheckInterval) {
        return sources_.taps.isProcessTrusted(false);
    }
    lastPermissionCheck_ = now;
    if (sources_.taps.isProcessTrusted(!hasPromptedForPermission_)) {
        return true;
    }
    if (!std::exchange(hasPromptedForPermission_, true)) {
        debugLog("[KeyboardMonitor] Accessibility permission not granted - prompted user once");
    }
    return false;
}

void KeyboardMonitor::stop() {
    if (!isMonitoring_) {
        return;
    }
    if (eventTap_) {
        eventTap_->setEnabled(false);
        eventTap_.reset();
    }
    isMonitoring_ = false;
    std::puts("KeyboardMonitor: Stopped");
}

void KeyboardMonitor::handle(TapEvent event) {
    if (event == TapEvent::disabled) {
        debugLog("[KeyboardMonitor] The desktop disabled the event tap");
        stop();
        handlers_.onStopped();
        return;
    }
    ++keyCount;
    if (keyCount < 6 || keyCount % 100 == 0) {
        debugLog("[KeyboardMonitor] Key event received (total: " + std::to_string(keyCount) + ")");
    }
    handlers_.onKeyPress(getActiveAppInfo());
}

ActiveAppInfo KeyboardMonitor::getActiveAppInfo() const {
    const auto application = sources_.workspace.frontmostApplication();
    if (!application) {
        return {unknownBundleId, "Unknown"};
    }
    const std::string bundleId = application->bundleIdentifier.value_or(unknownBundleId);
    return {bundleId, application->localizedName.value_or(bundleId)};
}

} // namespace fernhollow
