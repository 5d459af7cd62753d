#pragma once

#include "Platform/EventTap.h"
#include "Platform/StatusItem/Tray.h"
#include "Platform/Workspace.h"

#include <cstdint>
#include <memory>
#include <string_view>

// All that the rest of the platform sees of X11: nothing outside this folder includes or links XCB.
namespace fernhollow {

/// Whether the X server that $DISPLAY names accepts us. Waits for its answer.
bool isX11DisplayReachable();

std::unique_ptr<EventTapProvider> makeX11EventTapProvider(EventTapProvider::Prompt prompt);

/// With the installed applications and the language of messages that the environment names.
std::unique_ptr<Workspace> makeX11Workspace();

/// Asks the window manager to bring the program's own window to the front, and tells the launcher that gave
/// `startupId` that it has come up. False when the id does not say when the person did what it belongs to;
/// the toolkit's own request is as good then.
bool activateX11Window(std::uint32_t window, std::string_view startupId);

/// For a program whose own windows are X11 windows.
std::unique_ptr<Tray> makeXEmbedTray();

} // namespace fernhollow
