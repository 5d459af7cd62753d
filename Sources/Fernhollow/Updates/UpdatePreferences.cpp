#include "Updates/UpdatePreferences.h"

#include "Platform/UserDefaults.h"
#include "Support/ApplicationIdentity.h"

#include <charconv>
#include <cstdint>
#include <string_view>

namespace fernhollow::UpdatePreferences {
namespace {

constexpr std::string_view automaticChecksKey = "updateAutomaticChecks";
constexpr std::string_view startsKey = "updateStarts";
constexpr std::string_view lastCheckKey = "updateLastCheck";
constexpr std::string_view skippedVersionKey = "updateSkippedVersion";
constexpr std::string_view announcedVersionKey = "updateAnnouncedVersion";

constexpr std::string_view yes = "yes";
constexpr std::string_view no = "no";

std::string key(std::string_view name) {
    return std::string(applicationIdentifier).append(".").append(name);
}

std::optional<std::string> text(std::string_view name) {
    return UserDefaults::string(key(name));
}

void setText(std::string_view name, const std::string& value) {
    UserDefaults::setString(key(name), value);
}

template<class Number>
std::optional<Number> number(std::string_view name) {
    const auto stored = text(name);
    if (!stored) {
        return std::nullopt;
    }
    Number value{};
    const char* const end = stored->data() + stored->size();
    const auto [rest, error] = std::from_chars(stored->data(), end, value);
    return error == std::errc() && rest == end ? std::optional(value) : std::nullopt;
}

} // namespace

std::optional<bool> automaticChecks() {
    const auto stored = text(automaticChecksKey);
    if (stored == yes) {
        return true;
    }
    return stored == no ? std::optional(false) : std::nullopt;
}

void setAutomaticChecks(bool isAllowed) {
    setText(automaticChecksKey, std::string(isAllowed ? yes : no));
}

int starts() {
    return number<int>(startsKey).value_or(0);
}

void setStarts(int starts) {
    setText(startsKey, std::to_string(starts));
}

std::optional<Instant> lastCheck() {
    // A larger number would overflow the clock's own unit.
    constexpr auto latest =
        std::chrono::duration_cast<std::chrono::seconds>(Instant::duration::max()).count();
    const auto seconds = number<std::int64_t>(lastCheckKey);
    if (!seconds || *seconds < 0 || *seconds > latest) {
        return std::nullopt;
    }
    return Instant(std::chrono::seconds(*seconds));
}

void setLastCheck(Instant instant) {
    setText(lastCheckKey, std::to_string(unixSeconds(instant)));
}

std::optional<std::string> skippedVersion() {
    return text(skippedVersionKey);
}

void setSkippedVersion(const std::string& version) {
    setText(skippedVersionKey, version);
}

std::optional<std::string> announcedVersion() {
    return text(announcedVersionKey);
}

void setAnnouncedVersion(const std::string& version) {
    setText(announcedVersionKey, version);
}

} // namespace fernhollow::UpdatePreferences
