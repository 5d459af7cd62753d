#include "Model/CountExport.h"

#include "KeypressCore/DailyCountsDatabase.h"
#include "KeypressCore/DailyCountsStore.h"
#include "KeypressCore/DailyCountsStoreError.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <numeric>
#include <string_view>

namespace fernhollow {
namespace {

using Json = nlohmann::ordered_json;

template<class Rows>
std::int64_t sum(const Rows& rows) {
    return std::accumulate(rows.begin(), rows.end(), std::int64_t{0},
                           [](std::int64_t total, const auto& row) { return total + row.count; });
}

/// Null when the account has no database here.
std::unique_ptr<DailyCountsDatabase> open(const std::string& email) {
    const DatabaseOpening opening{.owner = DailyCountsStore::ownerMark(email)};
    // Only if it exists, because opening a database creates it.
    const auto openExisting = [&opening](const std::filesystem::path& url) {
        return std::filesystem::exists(url) ? std::make_unique<DailyCountsDatabase>(url, opening) : nullptr;
    };
    try {
        return openExisting(DailyCountsStore::urlForAccount(email));
    } catch (const ForeignDatabaseError&) { // this account's database has the longer name
        return openExisting(DailyCountsStore::longUrlForAccount(email));
    }
}

ExportedDay read(DailyCountsDatabase& database, const DayKey& day, std::int64_t count) {
    ExportedDay exported{day, count, database.fetchHourlyCounts(day), database.fetchAppHourlyCounts(day)};
    exported.count = std::max(exported.count, sum(exported.hours));
    return exported;
}

std::map<std::string, std::string> readNames(DailyCountsDatabase& database) {
    std::map<std::string, std::string> names;
    for (const AppRegistryRow& row : database.fetchAppRegistry()) {
        names.emplace(row.bundleId, row.appName);
    }
    return names;
}

std::string nameOf(const std::map<std::string, std::string>& names, const std::string& identifier) {
    const auto known = names.find(identifier);
    return known == names.end() ? std::string() : known->second;
}

Json toJson(const ExportedDay& day, const std::map<std::string, std::string>& names) {
    Json hours = Json::array();
    for (const HourlyCountRow& row : day.hours) {
        hours.push_back({{"hour", row.hour}, {"count", row.count}});
    }
    Json applications = Json::array();
    for (const AppHourlyCountRow& row : day.applications) {
        applications.push_back({{"hour", row.hour},
                                {"application", row.bundleId},
                                {"name", nameOf(names, row.bundleId)},
                                {"count", row.count}});
    }
    return {{"day", day.day.rawValue},
            {"count", day.count},
            {"hours", std::move(hours)},
            {"applications", std::move(applications)}};
}

// Names come from desktop entries, which may contain text that is not UTF-8.
std::string dump(const Json& json) {
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + '\n';
}

std::string csvField(std::string_view text) {
    if (text.find_first_of(",\"\r\n") == std::string_view::npos) {
        return std::string(text);
    }
    std::string quoted = "\"";
    for (const char character : text) {
        quoted.append(character == '"' ? 2 : 1, character);
    }
    return quoted + '"';
}

/// Appends the day's rows: presses with an application, then those of an hour without one, then those without
/// an hour.
void appendCsv(std::string& csv, const ExportedDay& day, const std::map<std::string, std::string>& names) {
    const auto append = [&csv, &day](const std::string& hour, const std::string& application,
                                     const std::string& name, std::int64_t count) {
        if (count > 0) {
            csv += day.day.rawValue + ',' + hour + ',' + csvField(application) + ',' + csvField(name) + ',' +
                   std::to_string(count) + "\r\n";
        }
    };
    std::map<int, std::int64_t> unattributed;
    for (const HourlyCountRow& row : day.hours) {
        unattributed[row.hour] += row.count;
    }
    for (const AppHourlyCountRow& row : day.applications) {
        append(std::to_string(row.hour), row.bundleId, nameOf(names, row.bundleId), row.count);
        unattributed[row.hour] -= row.count;
    }
    for (const auto& [hour, count] : unattributed) {
        append(std::to_string(hour), {}, {}, count);
    }
    append({}, {}, {}, day.count - std::max(sum(day.hours), sum(day.applications)));
}

} // namespace

CountExport CountExport::ofAccount(const std::string& email, const DayKey& today) {
    CountExport result;
    if (const auto database = open(email)) {
        for (const DailyCountRow& row : database->fetchCounts(DayKey("0000-00-00"), DayKey("9999-99-99"))) {
            result.days.push_back(read(*database, row.day, row.count));
        }
        if (result.days.empty() || result.days.back().day < today) { // no flush has written the day yet
            if (ExportedDay begun = read(*database, today, 0); begun.count > 0) {
                result.days.push_back(std::move(begun));
            }
        }
        result.names = readNames(*database);
    }
    return result;
}

CountExport CountExport::ofDay(const std::string& email, const DayKey& day) {
    const auto database = open(email);
    if (!database) {
        return {{ExportedDay{day, 0, {}, {}}}, {}};
    }
    return {{read(*database, day, database->count(day))}, readNames(*database)};
}

std::string CountExport::json() const {
    Json all = Json::array();
    for (const ExportedDay& day : days) {
        all.push_back(toJson(day, names));
    }
    return dump(all);
}

std::string CountExport::dayJson() const {
    return dump(toJson(days.front(), names));
}

std::string CountExport::csv() const {
    std::string csv = "day,hour,application,name,count\r\n";
    for (const ExportedDay& day : days) {
        appendCsv(csv, day, names);
    }
    return csv;
}

} // namespace fernhollow
