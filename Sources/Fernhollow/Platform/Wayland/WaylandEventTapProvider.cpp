#include "Platform/Wayland/WaylandEventTapProvider.h"

#include "Platform/Wayland/KeytapConnection.h"
#include "Support/DebugLog.h"

#include <QFileInfo>
#include <QProcess>
#include <QString>
#include <QStringList>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <system_error>
#include <utility>

namespace fernhollow {
namespace {

using namespace std::chrono_literals;

constexpr auto firstPause = 1s;
constexpr auto longestPause = 30s;

void turnOn() {
    const QStringList arguments{QString::fromUtf8(WaylandEventTapProvider::switchProgram),
                                QStringLiteral("on")};
    if (!QProcess::startDetached(QStringLiteral("pkexec"), arguments)) {
        debugLog("[EventTap] Cannot ask for permission: pkexec does not start");
    }
}

TrustProblem problemOfAMissingService() {
    if (!QFileInfo(QString::fromUtf8(WaylandEventTapProvider::switchProgram)).isExecutable()) {
        return {
            "In a Wayland session Fernhollow counts through a small system service, which is not installed.",
            "Install Fernhollow's Debian package, which brings the service. Or log out and choose the "
            "desktop's X11 session (often called Xorg) on the login screen."};
    }
    return {
        "Counting in Wayland sessions is turned off on this machine.",
        "A small system service counts the keys of everybody who sits at this machine. It reports only how "
        "many keys were pressed, never which. Turning it on needs an administrator's password.",
        TrustAction{"Turn On Counting", turnOn}};
}

TrustProblem problemOf(keytap::Refusal refusal) {
    if (refusal == keytap::Refusal::noLocalSession) {
        return {
            "This session is not at a screen and keyboard of this machine, so its presses cannot be counted.",
            "Fernhollow counts in sessions that were logged into at the machine itself."};
    }
    const char* reason = keytap::explanation(refusal);
    return {std::string("The counting service refused to count. ") + (reason ? reason : ""),
            "Fernhollow tries again by itself."};
}

TrustProblem problemOfAnError(int error) {
    return {"The counting service does not answer: " + std::generic_category().message(error) + ".",
            "Fernhollow tries again by itself."};
}

/// The connection's presses, one event for each.
class KeytapTap final : public EventTap {
public:
    KeytapTap(std::shared_ptr<KeytapConnection> connection, KeytapConnection::Handlers handlers)
        : connection_(std::move(connection)), handlers_(std::move(handlers)) {}
    KeytapTap(const KeytapTap&) = delete;
    KeytapTap& operator=(const KeytapTap&) = delete;
    ~KeytapTap() override { setEnabled(false); }

    void setEnabled(bool enabled) override {
        if (std::exchange(isEnabled_, enabled) == enabled) {
            return;
        }
        if (enabled) {
            connection_->setHandlers(handlers_);
        } else {
            connection_->setHandlers({});
            connection_->close();
        }
    }

private:
    std::shared_ptr<KeytapConnection> connection_;
    KeytapConnection::Handlers handlers_;
    bool isEnabled_ = false;
};

} // namespace

WaylandEventTapProvider::WaylandEventTapProvider(Prompt prompt, std::shared_ptr<KeytapConnection> connection)
    : prompt_(std::move(prompt)), connection_(std::move(connection)) {}

bool WaylandEventTapProvider::isProcessTrusted(bool prompting) {
    isPromptDue_ |= prompting;
    if (connection_->isOpen()) {
        return true;
    }
    if (!pauseEnd_.hasExpired()) {
        return false;
    }
    const int error = connection_->open();
    if (error == 0) {
        return true;
    }
    if (error == ENOENT || error == ECONNREFUSED) {
        report(problemOfAMissingService());
    } else {
        report(problemOfAnError(error));
        pause();
    }
    return false;
}

std::unique_ptr<EventTap> WaylandEventTapProvider::createTap(Callback callback) {
    if (!connection_->isOpen()) {
        return nullptr;
    }
    const auto report = std::make_shared<Callback>(std::move(callback));
    const auto onPresses = [this, report](std::uint64_t presses) {
        pauseLength_ = 0s;
        logged_.clear();
        for (; presses > 0; --presses) {
            (*report)(TapEvent::keyDown);
        }
    };
    const auto onEnded = [this, report](std::optional<keytap::Refusal> refusal) {
        noteEnd(refusal);
        (*report)(TapEvent::disabled);
    };
    return std::make_unique<KeytapTap>(connection_, KeytapConnection::Handlers{onPresses, onEnded});
}

void WaylandEventTapProvider::noteEnd(std::optional<keytap::Refusal> refusal) {
    pause();
    if (refusal) {
        report(problemOf(*refusal));
    } else {
        debugLog("[EventTap] The counting service ended the connection");
    }
}

void WaylandEventTapProvider::pause() {
    pauseLength_ = std::clamp<std::chrono::seconds>(pauseLength_ * 2, firstPause, longestPause);
    pauseEnd_.setRemainingTime(pauseLength_);
}

void WaylandEventTapProvider::report(const TrustProblem& problem) {
    if (std::exchange(logged_, problem.missing) != problem.missing) {
        debugLog("[EventTap] " + problem.missing);
    }
    if (std::exchange(isPromptDue_, false) && prompt_) {
        prompt_(problem);
    }
}

} // namespace fernhollow
