#pragma once

#include <unicode/timezone.h>

#include <memory>
#include <optional>
#include <string>
#include <sys/stat.h>

namespace fernhollow {

/// Follows the time zone of the system: the TZ variable, as the C library reads it (a zone, a file, or a
/// rule), else what /etc/localtime points to.
///
/// Asking for the zone costs one lstat() while it stays the same; only a change asks ICU to find it.
class SystemTimeZone {
public:
    /// The system's zone when it is another one than this object gave last, or it gave none yet.
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
