#include "Model/Sync/BackendRequests.h"

#include "Support/InternetTime.h"

#include <QByteArray>
#include <QString>
#include <QUrl>
#include <nlohmann/json.hpp>

#include <initializer_list>
#include <utility>

namespace fernhollow {
namespace {

using nlohmann::json;
using Query = std::initializer_list<std::pair<std::string_view, std::string>>;

constexpr int historyDays = 30;

// Everything but letters, digits and "-._~" is encoded, "+" above all: a server reads it as a blank.
std::string withQuery(const std::string& url, Query items) {
    QByteArray query;
    for (const auto& [name, value] : items) {
        query += query.isEmpty() ? '?' : '&';
        query += QByteArray::fromRawData(name.data(), static_cast<qsizetype>(name.size()));
        query += '=' + QUrl::toPercentEncoding(QString::fromStdString(value), ",");
    }
    const std::string whole = url + query.toStdString();
    return QUrl::fromEncoded(QByteArray::fromStdString(whole), QUrl::StrictMode).isValid() ? whole : url;
}

} // namespace

BackendRequests::BackendRequests(SupabaseConfig config, std::string deviceId)
    : config_(std::move(config)), deviceId_(std::move(deviceId)) {}

auto BackendRequests::upsertDayCount(std::string_view email, const DayKey& day, std::int64_t count,
                                     Instant now) const -> Request {
    return upsert("device_day_counts", "customer_email,device_id,day",
                  {{"customer_email", email},
                   {"device_id", deviceId_},
                   {"day", day.rawValue},
                   {"count", count},
                   {"updated_at", internetTime(now)}});
}

auto BackendRequests::upsertHourCount(std::string_view email, const DayKey& day, int hour, std::int64_t count,
                                      Instant now) const -> Request {
    return upsert("device_hour_counts", "customer_email,device_id,day,hour",
                  {{"customer_email", email},
                   {"device_id", deviceId_},
                   {"day", day.rawValue},
                   {"hour", hour},
                   {"count", count},
                   {"updated_at", internetTime(now)}});
}

auto BackendRequests::upsertAppHourCount(std::string_view email, const DayKey& day, int hour,
                                         std::string_view bundleId, std::int64_t count, Instant now) const
    -> Request {
    return upsert("device_app_hour_counts", "customer_email,device_id,day,hour,bundle_id",
                  {{"customer_email", email},
                   {"device_id", deviceId_},
                   {"day", day.rawValue},
                   {"hour", hour},
                   {"bundle_id", bundleId},
                   {"count", count},
                   {"updated_at", internetTime(now)}});
}

auto BackendRequests::upsertAppRegistry(std::string_view email, std::string_view bundleId,
                                        std::string_view appName, bool isHidden, Instant now) const
    -> Request {
    return upsert("device_app_registry", "customer_email,bundle_id",
                  {{"customer_email", email},
                   {"bundle_id", bundleId},
                   {"app_name", appName},
                   {"is_hidden", isHidden},
                   {"updated_at", internetTime(now)}});
}

auto BackendRequests::registerDevice(std::string_view email, std::string_view deviceName, Instant now) const
    -> Request {
    return upsert("devices", "customer_email,device_id",
                  {{"customer_email", email},
                   {"device_id", deviceId_},
                   {"device_name", deviceName},
                   {"last_seen_at", internetTime(now)}});
}

auto BackendRequests::fetchDeviceCount(std::string_view email, const DayKey& day) const -> Request {
    auto result = request(HttpRequest::Method::get, "/rest/v1/device_day_counts");
    result.url = withQuery(result.url, {{"customer_email", "eq." + std::string(email)},
                                        {"device_id", "eq." + deviceId_},
                                        {"day", "eq." + day.rawValue},
                                        {"select", "count"}});
    return result;
}

auto BackendRequests::todayTotal(std::string_view email, const DayKey& today) const -> Request {
    return call("get_account_today_total", {{"p_email", email}, {"p_day", today.rawValue}});
}

auto BackendRequests::dailyTotals(std::string_view email, const DayKey& today) const -> Request {
    return call("get_account_daily_totals",
                {{"p_email", email}, {"p_days", historyDays}, {"p_end_day", today.rawValue}});
}

auto BackendRequests::hourlyTotals(std::string_view email, const DayKey& today) const -> Request {
    return call("get_account_hourly_totals", {{"p_email", email}, {"p_day", today.rawValue}});
}

auto BackendRequests::appHourlyTotals(std::string_view email, const DayKey& today) const -> Request {
    return call("get_account_app_hourly_totals", {{"p_email", email}, {"p_day", today.rawValue}});
}

auto BackendRequests::appDailyTotals(std::string_view email, const DayKey& today) const -> Request {
    return call("get_account_app_daily_totals",
                {{"p_email", email}, {"p_days", historyDays}, {"p_end_day", today.rawValue}});
}

auto BackendRequests::devices(std::string_view email) const -> Request {
    return call("get_account_devices", {{"p_email", email}});
}

auto BackendRequests::upsert(std::string_view table, std::string_view conflictTarget, const json& row) const
    -> Request {
    auto result = request(HttpRequest::Method::post, "/rest/v1/" + std::string(table));
    result.headers.emplace_back("Prefer", "resolution=merge-duplicates");
    result.url = withQuery(result.url, {{"on_conflict", std::string(conflictTarget)}});
    return withBody(std::move(result), row);
}

auto BackendRequests::call(std::string_view procedure, const json& parameters) const -> Request {
    return withBody(request(HttpRequest::Method::post, "/rest/v1/rpc/" + std::string(procedure)), parameters);
}

auto BackendRequests::withBody(HttpRequest request, const json& body) const -> Request {
    try {
        request.body = body.dump();
    } catch (const json::type_error&) { // a text that is not UTF-8
        return std::nullopt;
    }
    return request;
}

HttpRequest BackendRequests::request(HttpRequest::Method method, std::string path) const {
    return {.method = method,
            .url = config_.url + path,
            .headers = {{"Content-Type", "application/json"},
                        {"apikey", config_.anonKey},
                        {"Authorization", "Bearer " + config_.anonKey}},
            .body = {}};
}

} // namespace fernhollow
