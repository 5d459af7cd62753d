#pragma once

#include "Platform/EventTap.h"
#include "Platform/Session.h"

#include <memory>

namespace fernhollow {

class KeytapConnection;
class StatusItem;
class Workspace;

/// The desktop that the program runs on: makes what the program needs of it, each part by the implementation
/// for this session. A new desktop gets a folder of its own with its implementations, and a line in each of
/// these functions. A value whose copies share one connection to the counting service; main thread only.
class Desktop {
public:
    explicit Desktop(Session session = currentSession());

    /// Whether the toolkit would find a display. Asked before there is an application object, because the
    /// toolkit aborts where it finds none. Waits for the display's answer.
    static bool isReachable();

    std::unique_ptr<EventTapProvider> makeEventTapProvider(EventTapProvider::Prompt prompt) const;

    /// One that knows no application where the session does not tell.
    std::unique_ptr<Workspace> makeWorkspace() const;

    /// Needs the application object.
    std::unique_ptr<StatusItem> makeStatusItem() const;

private:
    Session session_;
    std::shared_ptr<KeytapConnection> keytap_; // in a Wayland session
};

} // namespace fernhollow
