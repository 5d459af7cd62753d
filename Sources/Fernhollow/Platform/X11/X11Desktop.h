#pragma once

#include "Platform/EventTap.h"
#include "Platform/StatusItem/Tray.h"
#include "Platform/Workspace.h"

#include <cstdint>
#include <memory>
#include <string_view>

// The only header of this folder for the rest of the platform. No code outside this folder includes or links
// XCB.
namespace fernhollow {

/// Whether the X server that $DISPLAY names accepts us. Waits for its answer.
bool isX11DisplayReachable();

std::unique_ptr<EventTapProvider> makeX11EventTapProvider(EventTapProvider::Prompt prompt);

/// Names applications in the language of messages that the environment sets.
std::unique_ptr<Workspace> makeX11Workspace();

/// Asks the window manager to bring the program's own window to the front, and reports to the launcher that
/// gave `startupId` that it has come up. False, without that request, when the id does not contain the time
/// of the person's action; Qt's own request is as good then.
bool activateX11Window(std::uint32_t window, std::string_view startupId);

/// Only for a program whose own windows are X11 windows.
std::unique_ptr<Tray> makeXEmbedTray();

} // namespace fernhollow
