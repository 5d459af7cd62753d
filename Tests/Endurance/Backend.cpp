#include "Endurance/Backend.h"

#include <QUrlQuery>
#include <nlohmann/json.hpp>

namespace fernhollow::tests {
namespace {

using nlohmann::json;

std::string parameter(const std::string& query, const char* name) {
    const auto value = QUrlQuery(QString::fromStdString(query))
                           .queryItemValue(QString::fromLatin1(name), QUrl::FullyDecoded);
    return value.mid(value.indexOf(QLatin1Char('.')) + 1).toStdString(); // behind "eq."
}

} // namespace

Backend* Backend::current = nullptr;

Backend::Backend(std::uint64_t seed) : random_(seed) {
    current = this;
}

Backend::~Backend() {
    current = nullptr;
}

auto Backend::ask(const HttpRequest& request) -> Reply {
    ++current->requests;
    return current->answer(request);
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

bool Backend::isRegistered(const std::string& email, const std::string& device) {
    return accounts_[email].registered.contains(device);
}

std::string Backend::nameOf(const std::string& email, const std::string& app) {
    return accounts_[email].names[app];
}

auto Backend::answer(const HttpRequest& request) -> Reply {
    const bool isGet = request.method == HttpRequest::Method::get;
    const std::string path = request.url.substr(urlFor(0).size() - 1);
    switch (network(std::stoi(path))) {
    case Network::fine:
        break;
    case Network::cut:
        return {};
    case Network::unavailable:
        return {HttpAnswer{503, "{}"}};
    case Network::limited:
        if (happens(50)) {
            return {HttpAnswer{429, "{}", "7"}};
        }
        break;
    case Network::unauthorized:
        return {HttpAnswer{401, "{}"}};
    case Network::portal: // a hotel's sign-in page, which no client may take for a success
        return {HttpAnswer{isGet ? 200 : 302, "<html>Welcome</html>"}};
    case Network::silent:
        if (happens(10)) {
            if (happens(50)) {
                handle(request, path);
            }
            return {.answer = {}, .isSilent = true};
        }
        break;
    case Network::flaky:
        if (happens(4)) {
            return {HttpAnswer{500, "{}"}};
        }
        if (happens(4)) {
            return {};
        }
        if (happens(8)) { // the write is stored, but the answer is lost
            handle(request, path);
            return {};
        }
    }
    return {handle(request, path)};
}

HttpAnswer Backend::handle(const HttpRequest& request, const std::string& path) {
    if (request.method == HttpRequest::Method::get) {
        return select(path.substr(path.find('?') + 1));
    }
    const std::string resource = path.substr(0, path.find('?'));
    const std::string name = resource.substr(resource.rfind('/') + 1);
    const auto body = json::parse(request.body);
    return resource.find("/rpc/") != std::string::npos ? call(body, name) : upsert(body, name);
}

HttpAnswer Backend::upsert(const json& row, const std::string& table) {
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
    return {201, ""};
}

HttpAnswer Backend::select(const std::string& query) {
    const Rows& known = rows(parameter(query, "customer_email"), parameter(query, "device_id"));
    const auto found = known.find({.day = parameter(query, "day")});
    return {200, found == known.end() ? "[]" : json{{{"count", found->second}}}.dump()};
}

HttpAnswer Backend::call(const json& parameters, const std::string& function) {
    Account& account = accounts_[parameters.at("p_email")];
    if (function == "get_account_devices") {
        json devices = json::array();
        for (const auto& [device, name] : account.registered) {
            devices.push_back(
                {{"device_id", device}, {"device_name", name}, {"last_seen_at", "2026-03-05T14:07:09Z"}});
        }
        return {200, devices.dump()};
    }
    const auto totals = dailyTotals(account);
    if (function == "get_account_daily_totals") {
        json days = json::array(); // all of them: a client looks for the days that it sent
        for (const auto& [day, total] : totals) {
            days.push_back({{"day", day}, {"total_count", total}});
        }
        return {200, days.dump()};
    }
    if (function != "get_account_today_total") {
        return {200, "[]"}; // the hours and the applications' past, which no comparison reads
    }
    const auto today = totals.find(parameters.at("p_day"));
    return {200, std::to_string(today != totals.end() ? today->second : 0)};
}

std::map<std::string, std::int64_t> Backend::dailyTotals(const Account& account) {
    std::map<std::string, std::int64_t> totals;
    for (const auto& [device, counts] : account.counts) {
        for (const auto& [place, count] : counts) {
            if (place.table == Table::days) {
                totals[place.day] += count;
            }
        }
    }
    return totals;
}

} // namespace fernhollow::tests
