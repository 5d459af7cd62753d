#pragma once

#include "KeypressCore/DayKey.h"
#include "KeypressCore/Records.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace fernhollow {

/// One day in this machine's database. Rows are in the order of hours, then identifiers.
struct ExportedDay {
    DayKey day;
    std::int64_t count = 0; ///< at least the sum of the hours, which may be ahead of their day until a flush
    std::vector<HourlyCountRow> hours;
    std::vector<AppHourlyCountRow> applications;
};

/// An account's counts on this machine, for export; `Documentation/Export.md` describes the formats.
struct CountExport {
    std::vector<ExportedDay> days;            ///< in their order
    std::map<std::string, std::string> names; ///< of the applications, by identifier

    /// Reads the account's database, whether or not the program is running. Without a database there
    /// are no days. Throws DailyCountsStoreError or std::filesystem::filesystem_error.
    static CountExport ofAccount(const std::string& email, const DayKey& today);
    /// Reads one day alone; the result has that day even when nothing was counted on it.
    static CountExport ofDay(const std::string& email, const DayKey& day);

    /// An array with one object for each day, in UTF-8; ends with a line feed.
    std::string json() const;
    /// The object of the only day; for the result of ofDay().
    std::string dayJson() const;
    /// RFC 4180, in UTF-8. Each press is in exactly one row.
    std::string csv() const;
};

} // namespace fernhollow
