#pragma once

#include "Platform/EventTap.h"
#include "Platform/StatusItem/Tray.h"
#include "Platform/Workspace.h"

#include <memory>

// All that the rest of the platform sees of X11: nothing outside this folder includes or links XCB.
namespace fernhollow {

/// Whether the X server that $DISPLAY names accepts us. Waits for its answer.
bool isX11DisplayReachable();

std::unique_ptr<EventTapProvider> makeX11EventTapProvider(EventTapProvider::Prompt prompt);

/// With the installed applications and the language of messages that the environment names.
std::unique_ptr<Workspace> makeX11Workspace();

/// For a program whose own windows are X11 windows.
std::unique_ptr<Tray> makeXEmbedTray();

} // namespace fernhollow
