#pragma once

#include "KeypressCore/DayKey.h"
#include "KeypressCore/Records.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace fernhollow {

/// What this machine's database holds of one day. Rows are in the order of hours, then identifiers.
struct ExportedDay {
    DayKey day;
    std::int64_t count = 0; ///< at least the sum of the hours, which are ahead of their day until a flush
    std::vector<HourlyCountRow> hours;
    std::vector<AppHourlyCountRow> applications;
};

/// An account's counts on this machine as they leave the program; `Documentation/Export.md` describes the
/// formats.
struct CountExport {
    std::vector<ExportedDay> days;            ///< in their order
    std::map<std::string, std::string> names; ///< of the applications, by identifier

    /// Reads the account's database, beside a running program or without one. No days where there is no
    /// database. Throws DailyCountsStoreError or std::filesystem::filesystem_error.
    static CountExport ofAccount(const std::string& email, const DayKey& today);
    /// Reads one day alone. Its count is 0 when the database has no row for it.
    static CountExport ofDay(const std::string& email, const DayKey& day);

    /// An object a day in an array, in UTF-8; ends with a line feed.
    std::string json() const;
    /// The same for the only day, as one object.
    std::string dayJson() const;
    /// RFC 4180, in UTF-8: the counts of all rows together are the presses, each once.
    std::string csv() const;
};

} // namespace fernhollow
