#pragma once

#include "Platform/EventTap.h"
#include "Platform/Session.h"

#include <memory>

namespace fernhollow {

class KeytapConnection;
class StatusItem;
class Workspace;

/// Makes the program's interfaces to the desktop, each with the implementation for this session. A new
/// desktop gets a folder with its implementations, and a line in each of these functions. A value whose
/// copies share one connection to the counting service; main thread only.
class Desktop {
public:
    explicit Desktop(Session session = currentSession());

    /// Whether Qt would find a display. Called before there is an application object, because Qt aborts
    /// when it finds none. Waits for the display's answer.
    static bool isReachable();

    std::unique_ptr<EventTapProvider> makeEventTapProvider(EventTapProvider::Prompt prompt) const;

    /// In a session that does not say which application is in front, the workspace knows none.
    std::unique_ptr<Workspace> makeWorkspace() const;

    /// Called once there is an application object.
    std::unique_ptr<StatusItem> makeStatusItem() const;

private:
    Session session_;
    std::shared_ptr<KeytapConnection> keytap_; // in a Wayland session
};

} // namespace fernhollow
