#pragma once

#include "Support/HttpSession.h"

#include <nlohmann/json_fwd.hpp>

#include <compare>
#include <cstdint>
#include <map>
#include <optional>
#include <random>
#include <string>

namespace fernhollow::tests {

enum class Table { days, hours, applications };

/// The place of a row in one of the tables of counts, on a machine and on the backend. Hour and
/// application are empty where the table has no such column.
struct Place {
    Table table = Table::days;
    std::string day{};
    int hour = -1;
    std::string app{};

    auto operator<=>(const Place&) const = default;
};

using Rows = std::map<Place, std::int64_t>;

/// The network between one machine and the backend.
enum class Network { fine, cut, unavailable, limited, unauthorized, flaky, silent, portal };

/// The backend of the machines: the wire contract over tables in memory, and the faults of the network to it.
///
/// Each machine has a base address of its own, so that its network can fail alone. It lives on the thread of
/// the machines, which ask it without a socket: DirectSession.cpp replaces HttpSession here.
class Backend {
public:
    explicit Backend(std::uint64_t seed);
    ~Backend();
    Backend(const Backend&) = delete;
    Backend& operator=(const Backend&) = delete;

    static std::string urlFor(int machine) { return "http://backend/" + std::to_string(machine); }
    void setNetwork(int machine, Network network) { networks_[machine] = network; }
    Network network(int machine) const;

    /// The backend's reply to one request.
    struct Reply {
        std::optional<HttpAnswer> answer; ///< absent when the connection ends before the answer
        bool isSilent = false;            ///< true when no reply ever comes
    };
    static Reply ask(const HttpRequest& request);

    /// The backend's rows of a device, and of each device of an account.
    const Rows& rows(const std::string& email, const std::string& device);
    const std::map<std::string, Rows>& devices(const std::string& email);
    bool isRegistered(const std::string& email, const std::string& device);
    /// The name of an application; empty when it was never registered.
    std::string nameOf(const std::string& email, const std::string& app);

    std::int64_t requests = 0;

private:
    struct Account {
        std::map<std::string, Rows> counts; // by device
        std::map<std::string, std::string> names;
        std::map<std::string, std::string> registered;
    };

    Reply answer(const HttpRequest& request);
    HttpAnswer handle(const HttpRequest& request, const std::string& path);
    HttpAnswer upsert(const nlohmann::json& row, const std::string& table);
    HttpAnswer select(const std::string& query);
    HttpAnswer call(const nlohmann::json& parameters, const std::string& function);
    /// The sums of all devices by day.
    static std::map<std::string, std::int64_t> dailyTotals(const Account& account);
    bool happens(unsigned percent) { return random_() % 100 < percent; }

    static Backend* current;
    std::mt19937_64 random_;
    std::map<int, Network> networks_;
    std::map<std::string, Account> accounts_; // by address
};

} // namespace fernhollow::tests
