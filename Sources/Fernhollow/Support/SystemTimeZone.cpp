#include "Support/SystemTimeZone.h"

#include "Support/DebugLog.h"
#include "Support/PosixTimeZone.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <system_error>

namespace fernhollow {
namespace fs = std::filesystem;
namespace {

using Zone = std::unique_ptr<icu::TimeZone>;

constexpr const char* systemsFile = "/etc/localtime";

fs::path zoneFolder() {
    const char* folder = std::getenv("TZDIR");
    return folder != nullptr && *folder != '\0' ? folder : "/usr/share/zoneinfo";
}

Zone utc() {
    return Zone(icu::TimeZone::getGMT()->clone());
}

/// The zone with that exact name; null for other names, which ICU would read by rules of its own ("GMT+3"
/// with the opposite sign).
Zone namedZone(std::string_view name) {
    const auto id = icu::UnicodeString::fromUTF8({name.data(), static_cast<std::int32_t>(name.size())});
    icu::UnicodeString canonical;
    UBool isSystemId = false;
    UErrorCode status = U_ZERO_ERROR;
    icu::TimeZone::getCanonicalID(id, canonical, isSystemId, status);
    return U_SUCCESS(status) && isSystemId ? Zone(icu::TimeZone::createTimeZone(id)) : nullptr;
}

/// The zone whose name is the path's place in a database of zones.
Zone zoneOfPath(const fs::path& path) {
    std::error_code error;
    for (const fs::path& candidate : {path, fs::canonical(path, error)}) {
        const std::string text = candidate.lexically_normal().native();
        for (const std::string_view folder : {"/zoneinfo/posix/", "/zoneinfo/right/", "/zoneinfo/"}) {
            const auto found = text.rfind(folder);
            if (found != std::string::npos) {
                if (auto zone = namedZone(std::string_view(text).substr(found + folder.size()))) {
                    return zone;
                }
            }
        }
    }
    return nullptr;
}

/// The zone of the rule for future years, which is the last line of a compiled zone file (RFC 8536).
Zone zoneOfContents(const fs::path& path) {
    std::ifstream stream(path, std::ios::binary);
    const std::string contents{std::istreambuf_iterator<char>(stream), {}};
    if (!contents.starts_with("TZif") || !contents.ends_with('\n')) {
        return nullptr;
    }
    const std::string_view text = std::string_view(contents).substr(0, contents.size() - 1);
    return makePosixTimeZone(text.substr(text.rfind('\n') + 1));
}

/// The zone that the value of TZ names, tried in the order of the C library: a file, then a rule. Null
/// when it is neither.
Zone zoneOfVariable(std::string_view value) {
    if (value.starts_with(':')) {
        value.remove_prefix(1);
    }
    if (value.empty()) {
        return utc();
    }
    const fs::path path = zoneFolder() / value; // an absolute path stays what it is
    std::error_code error;
    if (fs::is_regular_file(path, error)) {
        if (auto zone = zoneOfPath(path)) {
            return zone;
        }
        if (auto zone = zoneOfContents(path)) {
            return zone;
        }
    }
    // ICU may know a zone that this system lacks, and a name with a region can mean nothing else.
    if (value.find('/') != std::string_view::npos || !fs::is_directory(zoneFolder(), error)) {
        if (auto zone = namedZone(value)) {
            return zone;
        }
    }
    return makePosixTimeZone(value);
}

} // namespace

std::unique_ptr<icu::TimeZone> SystemTimeZone::changedZone() {
    if (!update()) {
        return nullptr;
    }
    if (!source_->variable) {
        return std::unique_ptr<icu::TimeZone>(icu::TimeZone::detectHostTimeZone());
    }
    if (auto zone = zoneOfVariable(*source_->variable)) {
        return zone;
    }
    static thread_local std::string logged; // so that only one calendar of the thread logs it
    if (logged != *source_->variable) {
        logged = *source_->variable;
        debugLog("[SystemTimeZone] TZ=" + logged + " names no time zone; days and hours are those of UTC");
    }
    return utc();
}

bool SystemTimeZone::update() {
    const char* variable = std::getenv("TZ");
    struct stat file{};
    ::lstat(systemsFile, &file); // a missing file stays all zeros

    if (source_ && (variable == nullptr) == !source_->variable &&
        (variable == nullptr || *source_->variable == variable) && source_->inode == file.st_ino &&
        source_->changed.tv_sec == file.st_ctim.tv_sec && source_->changed.tv_nsec == file.st_ctim.tv_nsec) {
        return false;
    }
    source_ = Source{variable != nullptr ? std::optional<std::string>(variable) : std::nullopt, file.st_ino,
                     file.st_ctim};
    return true;
}

} // namespace fernhollow
