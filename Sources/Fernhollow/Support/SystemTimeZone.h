#pragma once

#include <unicode/timezone.h>

#include <memory>
#include <optional>
#include <string>
#include <sys/stat.h>

namespace fernhollow {

/// Follows the time zone of the system: the variable TZ, as the C library reads it (a zone, a file, or a
/// rule), else the zone that /etc/localtime points to. One thread only.
///
/// While the zone stays the same, a question costs one lstat(). Only after a change is ICU asked for the
/// zone.
class SystemTimeZone {
public:
    /// The system's zone at the first call and whenever it differs from the one returned last; null
    /// otherwise.
    std::unique_ptr<icu::TimeZone> changedZone();

private:
    struct Source {
        std::optional<std::string> variable;
        ino_t inode = 0;
        timespec changed{};
    };

    bool update();

    std::optional<Source> source_;
};

} // namespace fernhollow
