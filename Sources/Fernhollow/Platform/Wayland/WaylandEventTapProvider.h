#pragma once

#include "Keytap/Protocol.h"
#include "Platform/EventTap.h"

#include <QDeadlineTimer>

#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace fernhollow {

class KeytapConnection;

/// Counts in a Wayland session, where no program sees another one's presses: through the key-blind service of
/// the system, which hands on a number and nothing else. The service is off until the person turned it on.
/// Main thread only.
class WaylandEventTapProvider final : public EventTapProvider {
public:
    WaylandEventTapProvider(Prompt prompt, std::shared_ptr<KeytapConnection> connection);

    /// True while the service has taken us on. A service that is not there, or refused us, is asked again
    /// after a pause that grows up to 30 seconds.
    bool isProcessTrusted(bool prompting) override;
    std::unique_ptr<EventTap> createTap(Callback callback) override;

    /// The command behind the button that turns the service on. polkit asks for the person's password.
    static constexpr const char* switchProgram = "/usr/lib/fernhollow/fernhollow-keytap-switch";

private:
    void report(const TrustProblem& problem);
    void noteEnd(std::optional<keytap::Refusal> refusal);
    void pause();

    Prompt prompt_;
    std::shared_ptr<KeytapConnection> connection_;
    bool isPromptDue_ = false;
    std::string logged_; ///< the last problem
    std::chrono::seconds pauseLength_{0};
    QDeadlineTimer pauseEnd_;
};

} // namespace fernhollow
