#include "Endurance/Backend.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <string_view>
#include <tuple>

namespace fernhollow::tests {
namespace {

using nlohmann::json;

/// The day `days` before another one.
std::string dayBefore(const std::string& day, int days) {
    std::array<int, 3> parts{};
    std::sscanf(day.c_str(), "%d-%d-%d", &parts[0], &parts[1], &parts[2]);
    const std::chrono::year_month_day last{std::chrono::year{parts[0]},
                                           std::chrono::month{static_cast<unsigned>(parts[1])},
                                           std::chrono::day{static_cast<unsigned>(parts[2])}};
    const std::chrono::year_month_day first{std::chrono::sys_days{last} - std::chrono::days{days}};
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02u", static_cast<int>(first.year()),
                  static_cast<unsigned>(first.month()), static_cast<unsigned>(first.day()));
    return text.data();
}

std::string parameter(const RecordingServer::Request& request, const char* name) {
    const QUrlQuery query(QString::fromStdString(request.query));
    const auto value = query.queryItemValue(QString::fromLatin1(name), QUrl::FullyDecoded).toStdString();
    return value.substr(value.find('.') + 1); // behind "eq."
}

} // namespace

Backend::Backend(std::uint64_t seed) : random_(seed) {
    server_.answer = [this](const Request& request) {
        ++requests;
        const Answer given = answer(request);
        server_.requests.clear();
        return given;
    };
}

void Backend::setNetwork(int machine, Network network) {
    if (std::exchange(networks_[machine], network) == Network::silent && network != Network::silent) {
        server_.hangUp();
    }
}

Network Backend::network(int machine) const {
    const auto found = networks_.find(machine);
    return found != networks_.end() ? found->second : Network::fine;
}

const Rows& Backend::rows(const std::string& email, const std::string& device) {
    return accounts_[email].counts[device];
}

const std::map<std::string, Rows>& Backend::devices(const std::string& email) {
    return accounts_[email].counts;
}

auto Backend::answer(const Request& request) -> Answer {
    // Longer than what follows it: the client has to take the answer for an incomplete one.
    Answer cutShort{.raw = "HTTP/1.1 200 -\r\nContent-Length: 99\r\n\r\n[", .closes = true};
    const auto name = request.path.substr(request.path.rfind('/') + 1);
    switch (network(std::stoi(request.path.substr(1)))) {
    case Network::fine:
        break;
    case Network::cut:
        return cutShort;
    case Network::unavailable:
        return {.status = 503, .body = "{}"};
    case Network::limited:
        if (happens(50)) {
            return {.raw = "HTTP/1.1 429 -\r\nRetry-After: 7\r\nContent-Length: 2\r\n\r\n{}"};
        }
        break;
    case Network::unauthorized:
        return {.status = 401, .body = "{}"};
    case Network::portal: // of a hotel; it lets no write pass for a success
        return request.method == "GET" ? Answer{.body = "<html>Welcome</html>"}
                                       : Answer{.status = 302, .body = "<html>Welcome</html>"};
    case Network::silent:
        if (happens(10)) {
            if (happens(50)) {
                handle(request, name);
            }
            return {.isSilent = true};
        }
        break;
    case Network::flaky:
        if (happens(4)) {
            return {.status = 500, .body = "{}"};
        }
        if (happens(4)) {
            return cutShort;
        }
        if (happens(8)) { // taken, and the answer is lost
            handle(request, name);
            return cutShort;
        }
    }
    return handle(request, name);
}

auto Backend::handle(const Request& request, const std::string& name) -> Answer {
    if (request.method == "GET") {
        return select(request);
    }
    const bool isCall = request.path.find("/rpc/") != std::string::npos;
    return isCall ? call(request.json(), name) : upsert(request.json(), name);
}

auto Backend::upsert(const json& row, const std::string& table) -> Answer {
    Account& account = accounts_[row.at("customer_email")];
    if (table == "devices") {
        account.registered[row.at("device_id")] = row.at("device_name");
    } else if (table == "device_app_registry") {
        account.names[row.at("bundle_id")] = row.at("app_name");
    } else {
        Place place{.day = row.at("day")};
        if (table != "device_day_counts") {
            place.table = table == "device_hour_counts" ? Table::hours : Table::applications;
            place.hour = row.at("hour");
            place.app = row.value("bundle_id", "");
        }
        account.counts[row.at("device_id")][place] = row.at("count");
    }
    return {.status = 201, .body = ""};
}

auto Backend::select(const Request& request) -> Answer {
    const Rows& known = rows(parameter(request, "customer_email"), parameter(request, "device_id"));
    const auto found = known.find({.day = parameter(request, "day")});
    return {.body = found == known.end() ? "[]" : json{{{"count", found->second}}}.dump()};
}

auto Backend::call(const json& parameters, const std::string& function) -> Answer {
    Account& account = accounts_[parameters.at("p_email")];
    if (function == "get_account_devices") {
        json devices = json::array();
        for (const auto& [device, name] : account.registered) {
            devices.push_back(
                {{"device_id", device}, {"device_name", name}, {"last_seen_at", "2026-03-05T14:07:09Z"}});
        }
        return {.body = devices.dump()};
    }
    const bool isRange = parameters.contains("p_days");
    const std::string last = parameters.at(isRange ? "p_end_day" : "p_day");
    const std::string first = isRange ? dayBefore(last, parameters.at("p_days").get<int>() - 1) : last;
    const bool isHourly = function.find("hourly") != std::string::npos;
    const bool isByApp = function.find("_app_") != std::string::npos;
    const Table table = isByApp ? Table::applications : isHourly ? Table::hours : Table::days;
    std::map<std::tuple<std::string, int, std::string>, std::int64_t> sums;
    std::int64_t total = 0;
    for (const auto& [device, counts] : account.counts) {
        for (auto row = counts.lower_bound({.table = table, .day = first}); row != counts.end(); ++row) {
            const Place& place = row->first;
            if (place.table != table || place.day > last) {
                break;
            }
            sums[{place.day, isHourly ? place.hour : -1, place.app}] += row->second;
            total += row->second;
        }
    }
    if (function == "get_account_today_total") {
        return {.body = std::to_string(total)};
    }
    json rows = json::array();
    for (const auto& [key, sum] : sums) {
        json row{{"total_count", sum}};
        const auto& [day, hour, app] = key;
        row[isHourly ? "hour" : "day"] = isHourly ? json(hour) : json(day);
        if (isByApp) {
            row["bundle_id"] = app;
            row["app_name"] = account.names.contains(app) ? account.names[app] : app;
        }
        rows.push_back(std::move(row));
    }
    return {.body = rows.dump()};
}

} // namespace fernhollow::tests
