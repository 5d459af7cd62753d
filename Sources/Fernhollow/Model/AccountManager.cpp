#include "Model/AccountManager.h"

#include "Model/KeychainStore.h"
#include "Platform/UserDefaults.h"
#include "Support/DebugLog.h"
#include "Support/Text.h"
#include "Support/UserDirectories.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <cmath>
#include <filesystem>
#include <system_error>
#include <utility>

namespace fernhollow {
namespace fs = std::filesystem;
namespace {

constexpr const char* sessionKey = "accountSession";
constexpr const char* onboardingKeyPrefix = "hasSeenOnboarding_";

/// The stored date counts seconds from 2001-01-01 00:00:00 UTC.
constexpr Instant sessionEpoch{std::chrono::sys_days{std::chrono::year{2001} / 1 / 1}};

/// The longest accepted time from there; an Instant ends in the year 2262.
constexpr std::chrono::duration<double> farthestDate = std::chrono::years{200};

std::string onboardingAccount(const std::string& email) {
    return onboardingKeyPrefix + lowercased(email);
}

} // namespace

const char* AccountManager::AccountError::what() const noexcept {
    return code_ == Code::invalidEmail ? "Invalid email address" : "Configuration missing";
}

AccountManager::AccountManager(const Clock& clock, std::optional<SupabaseConfig> config)
    : clock_(clock), config_(std::move(config)) {
    loadPersistedSession();
    if (const auto address = email()) {
        loadOnboardingState(*address);
    }
}

std::optional<std::string> AccountManager::email() const {
    const auto* signedIn = std::get_if<SignedIn>(&status.get());
    return signedIn != nullptr ? std::optional(signedIn->session.email) : std::nullopt;
}

QCoro::Task<> AccountManager::verifyEmail(std::string email) {
    const std::string normalised = lowercased(trimmed(email));
    if (normalised.find('@') == std::string::npos) {
        throw AccountError(AccountError::Code::invalidEmail);
    }
    if (!config_) {
        throw AccountError(AccountError::Code::configurationMissing);
    }
    isVerifying.set(true);
    errorMessage.set(std::nullopt);
    debugLog("[AccountManager] Verifying email: " + normalised);

    const Session session{normalised, std::chrono::floor<std::chrono::milliseconds>(clock_.now())};
    status.set(SignedIn{session});
    persistSession(session);
    loadOnboardingState(normalised);
    if (onAccountChange) {
        onAccountChange(normalised);
    }
    debugLog("[AccountManager] Email verified successfully: " + normalised);
    isVerifying.set(false);
    co_return;
}

void AccountManager::signOut() {
    status.set(SignedOut{});
    connectedDevices.set({});
    hasSeenOnboarding.set(false);
    UserDefaults::remove(KeychainStore::key(sessionKey));
    clearLocalKeystrokeData();
    if (onAccountChange) {
        onAccountChange(std::nullopt);
    }
    debugLog("[AccountManager] Signed out");
}

void AccountManager::markOnboardingSeen() {
    const auto address = email();
    if (!address) {
        debugLog("[AccountManager] Cannot mark onboarding - no current email");
        return;
    }
    hasSeenOnboarding.set(true);
    UserDefaults::setString(KeychainStore::key(onboardingAccount(*address)), "true");
    debugLog("[AccountManager] Onboarding marked as seen for " + *address);
}

std::optional<AccountManager::Session> AccountManager::persistedSession() {
    const auto data = KeychainStore::readData(sessionKey);
    if (!data) {
        return std::nullopt;
    }
    try {
        return nlohmann::json::parse(*data).get<Session>();
    } catch (const nlohmann::json::exception&) {
        return std::nullopt; // the person signs in again
    }
}

void AccountManager::loadPersistedSession() {
    if (const auto session = persistedSession()) {
        status.set(SignedIn{*session});
        debugLog("[AccountManager] Loaded persisted session: " + session->email);
    }
}

void AccountManager::persistSession(const Session& session) {
    try {
        UserDefaults::setData(KeychainStore::key(sessionKey), nlohmann::json(session).dump());
    } catch (const nlohmann::json::type_error&) {
        return; // an address that is not UTF-8 is not kept for the next start
    }
}

void AccountManager::loadOnboardingState(const std::string& email) {
    const bool seen = KeychainStore::readString(onboardingAccount(email)) == "true";
    hasSeenOnboarding.set(seen);
    debugLog("[AccountManager] Onboarding state for " + email + (seen ? ": seen" : ": not seen"));
}

void AccountManager::clearLocalKeystrokeData() {
    fs::path folder;
    try {
        folder = applicationSupportDirectory() / "Fernhollow";
    } catch (const fs::filesystem_error&) {
        debugLog("[AccountManager] Could not find Application Support directory");
        return;
    }
    for (const std::string name : {"keypress.sqlite", "keypress.sqlite-wal", "keypress.sqlite-shm"}) {
        std::error_code error;
        if (!fs::exists(folder / name, error)) {
            continue;
        }
        if (fs::remove(folder / name, error)) {
            debugLog("[AccountManager] Deleted: " + name);
        } else {
            debugLog("[AccountManager] Failed to delete " + name + ": " + error.message());
        }
    }
    debugLog("[AccountManager] Local keystroke data cleared for security");
}

void to_json(nlohmann::json& json, const AccountManager::Session& session) {
    const std::chrono::duration<double> verifiedAt = session.verifiedAt - sessionEpoch;
    json = {{"email", session.email}, {"verifiedAt", verifiedAt.count()}};
}

void from_json(const nlohmann::json& json, AccountManager::Session& session) {
    json.at("email").get_to(session.email);
    const std::chrono::duration<double> verifiedAt(json.at("verifiedAt").get<double>());
    if (!(std::abs(verifiedAt.count()) < farthestDate.count())) {
        throw nlohmann::json::out_of_range::create(406, "verifiedAt is not a date", &json);
    }
    session.verifiedAt = sessionEpoch + std::chrono::round<std::chrono::milliseconds>(verifiedAt);
}

} // namespace fernhollow
