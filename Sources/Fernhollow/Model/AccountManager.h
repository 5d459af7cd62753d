#pragma once

#include "Model/DeviceInfo.h"
#include "Support/Clock.h"
#include "Support/Observable.h"
#include "Support/SupabaseConfig.h"

#include <nlohmann/json_fwd.hpp>
#include <qcorotask.h>

#include <exception>
#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace fernhollow {

/// The user's account: an e-mail address, and the session that keeps it from start to start.
///
/// The address is the identity; there is no password, and no server is asked. The address is stored
/// trimmed and in lower case and is the account's key everywhere. Lives for the whole run, main
/// thread only.
class AccountManager : public Observable {
public:
    struct Session {
        std::string email;
        Instant verifiedAt; ///< when the session was established, to the millisecond

        bool operator==(const Session&) const = default;
    };

    struct SignedOut {
        bool operator==(const SignedOut&) const = default;
    };
    struct SignedIn {
        Session session;
        bool operator==(const SignedIn&) const = default;
    };
    using Status = std::variant<SignedOut, SignedIn>;

    class AccountError : public std::exception {
    public:
        enum class Code {
            invalidEmail,         ///< the address has no at-sign
            configurationMissing, ///< the program was built without a backend
        };
        explicit AccountError(Code code) : code_(code) {}
        Code code() const { return code_; }
        const char* what() const noexcept override;

    private:
        Code code_;
    };

    /// Restores the session of the last run.
    explicit AccountManager(const Clock& clock,
                            std::optional<SupabaseConfig> config = SupabaseConfig::compiledIn());

    Published<Status> status{*this};
    Published<bool> isVerifying{*this};
    Published<std::optional<std::string>> errorMessage{*this};
    Published<std::vector<DeviceInfo>> connectedDevices{*this};
    Published<bool> hasSeenOnboarding{*this}; ///< of the signed-in account, on this machine

    /// Called after the account has changed: with the new address, or with nothing after signing out.
    std::function<void(const std::optional<std::string>&)> onAccountChange;

    /// The signed-in address; nothing when signed out.
    std::optional<std::string> email() const;

    /// The saved session, for use without an AccountManager; absent when there is none or it cannot be
    /// read. Logs nothing.
    static std::optional<Session> persistedSession();

    /// Signs in; replaces the session of another address. Throws AccountError, having changed nothing,
    /// when the text has no at-sign or the program has no backend.
    QCoro::Task<> verifyEmail(std::string email);
    void signOut();
    void markOnboardingSeen();

private:
    void loadPersistedSession();
    void persistSession(const Session& session);
    void loadOnboardingState(const std::string& email);
    void clearLocalKeystrokeData();

    const Clock& clock_;
    std::optional<SupabaseConfig> config_;
};

void to_json(nlohmann::json& json, const AccountManager::Session& session);
void from_json(const nlohmann::json& json, AccountManager::Session& session);

} // namespace fernhollow
