#pragma once

#include "KeypressCore/DayKey.h"
#include "Support/Clock.h"
#include "Support/HttpSession.h"
#include "Support/SupabaseConfig.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace fernhollow {

/// Makes the requests to the account's tables and procedures (PostgREST) for one device.
///
/// Counts are what the device has counted in that slot, never increments: each write replaces the row
/// with the same keys. A request is empty when its values cannot be put into JSON, which is UTF-8.
class BackendRequests {
public:
    BackendRequests(SupabaseConfig config, std::string deviceId);

    using Request = std::optional<HttpRequest>;

    Request upsertDayCount(std::string_view email, const DayKey& day, std::int64_t count, Instant now) const;
    Request upsertHourCount(std::string_view email, const DayKey& day, int hour, std::int64_t count,
                            Instant now) const;
    Request upsertAppHourCount(std::string_view email, const DayKey& day, int hour, std::string_view bundleId,
                               std::int64_t count, Instant now) const;
    Request upsertAppRegistry(std::string_view email, std::string_view bundleId, std::string_view appName,
                              bool isHidden, Instant now) const;
    Request registerDevice(std::string_view email, std::string_view deviceName, Instant now) const;

    /// This device's count of the day.
    Request fetchDeviceCount(std::string_view email, const DayKey& day) const;

    Request todayTotal(std::string_view email, const DayKey& today) const;
    Request dailyTotals(std::string_view email, const DayKey& today) const;
    Request hourlyTotals(std::string_view email, const DayKey& today) const;
    Request appHourlyTotals(std::string_view email, const DayKey& today) const;
    Request appDailyTotals(std::string_view email, const DayKey& today) const;
    Request devices(std::string_view email) const;

private:
    Request upsert(std::string_view table, std::string_view conflictTarget, const nlohmann::json& row) const;
    Request call(std::string_view procedure, const nlohmann::json& parameters) const;
    Request withBody(HttpRequest request, const nlohmann::json& body) const;
    HttpRequest request(HttpRequest::Method method, std::string path) const;

    SupabaseConfig config_;
    std::string deviceId_;
};

} // namespace fernhollow
