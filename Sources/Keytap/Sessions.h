#pragma once

#include "Keytap/Poller.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <sys/types.h>
#include <systemd/sd-bus.h>
#include <systemd/sd-login.h>
#include <vector>

namespace fernhollow::keytap {

/// One user's session at a seat, as logind describes it.
struct Sitting {
    std::string seat;
    std::string session;
    uid_t user = 0;
    bool isActive = false; ///< this is the session in front
    bool isLocked = false; ///< its screen is locked, if the desktop reports that to logind

    bool operator==(const Sitting&) const = default;
};

/// The users' sessions at seats: a copy of logind's knowledge, read again only when that changes.
///
/// Seats and their sessions come from logind's files under /run/systemd, locks from its property `LockedHint`
/// on the system bus. Without a bus no session counts as locked; with one, a session counts as locked until
/// logind has answered. Owned by the service, in its only thread.
class Sessions {
public:
    using Changed = std::function<void(const std::vector<Sitting>&)>;

    /// Calls `changed` with the present sessions before it returns, and again whenever they change.
    Sessions(Poller& poller, Changed changed);
    ~Sessions();

private:
    void refresh();
    std::vector<Sitting> read();
    bool isLocked(const std::string& session);
    void connect();
    void disconnect();
    void processBus();
    void askWhetherLocked(const std::string& session);
    static int propertiesChanged(sd_bus_message* message, void* self, sd_bus_error* error);
    static int lockedHintArrived(sd_bus_message* message, void* question, sd_bus_error* error);

    template<auto free>
    struct Free {
        void operator()(auto* pointer) const { free(pointer); }
    };
    /// Which session a pending question is about.
    struct Question {
        Sessions* sessions;
        std::string session;
    };

    Poller& poller_;
    Changed changed_;
    std::unique_ptr<sd_login_monitor, Free<sd_login_monitor_unref>> monitor_;
    std::unique_ptr<sd_bus, Free<sd_bus_flush_close_unref>> bus_;
    std::map<std::string, bool> locks_; // of the sessions in front; true until logind has answered
    std::vector<Sitting> sittings_;
};

} // namespace fernhollow::keytap
