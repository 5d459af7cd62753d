// What the backend answers: what becomes of it (sums, caches, names, a line of the log) is UTF-8 and stays
// within its limits.

#include "Fuzz.h"
#include "KeypressCore/CountLimits.h"
#include "Model/Sync/LoggedText.h"
#include "Model/Sync/RemoteCaches.h"
#include "Model/Sync/SyncRules.h"
#include "Model/Sync/WireRecords.h"

#include <optional>
#include <vector>

namespace fernhollow::fuzz {
namespace {

template<class Record>
using Decoder = std::optional<std::vector<Record>> (*)(std::string_view);

/// The rows of `body`, none where it holds others.
template<class Record>
std::vector<Record> decoded(Decoder<Record> decode, std::string_view body) {
    return decode(body).value_or(std::vector<Record>());
}

bool isWithin(std::int64_t count, std::int64_t maximum) {
    return count >= -maximum && count <= maximum;
}

bool isDay(std::string_view day) {
    return day.size() <= 10 && isUtf8(day);
}

void requireCounts(const RemoteAppCounts& counts) {
    for (const auto& [application, counted] : counts) {
        require(isWithin(counted.count, maximumAccountRow), "an application's count stays within its limit");
        require(isUtf8(application) && isUtf8(counted.appName), "what is shown is UTF-8");
    }
}

void requireCaches(std::string_view input) {
    for (const auto& [day, count] : historyCache(decoded(&wire::decodeDaily, input))) {
        require(isDay(day) && isWithin(count, maximumAccountDay), "a day's count stays within its limit");
    }
    for (const auto& [hour, count] : hourlyCache(decoded(&wire::decodeHours, input))) {
        require(isWithin(count, maximumAccountRow), "an hour's count stays within its limit");
    }
    for (const auto& [hour, counts] : appHourlyCache(decoded(&wire::decodeAppHours, input))) {
        requireCounts(counts);
    }
    for (const auto& [day, counts] : appDailyCache(decoded(&wire::decodeAppDaily, input))) {
        require(isDay(day), "a cached day is a text of ten bytes at most");
        requireCounts(counts);
    }
}

} // namespace

void check(std::string_view input) {
    if (const auto total = wire::decodeTotal(input)) {
        require(wire::decodeTotal(std::to_string(*total)) == total, "a total is decoded again");
    }
    for (const DeviceCount& row : decoded(&wire::decodeDeviceCounts, input)) {
        for (const std::int64_t local : {0, 1}) {
            const std::int64_t merged = DayMerge::of(local, row.count).count;
            require(merged >= local && merged <= maximumDeviceDay,
                    "a merged count is one that a machine can have");
        }
    }
    requireCaches(input);
    for (const DeviceInfo& device : decoded(&wire::decodeDevices, input)) {
        require(isUtf8(device.device_name), "what is shown is UTF-8");
        if (const auto seen = parseInternetTime(device.last_seen_at)) {
            require(parseInternetTime(internetTime(*seen)) == seen, "a time is decoded again");
        }
    }
    constexpr std::size_t characters = 40;
    if (const auto logged = loggedText(input, characters)) {
        require(isUtf8(*logged) && logged->size() <= 4 * characters, "what is logged is a short text");
    }
}

} // namespace fernhollow::fuzz
