#pragma once

#include "Support/RecordingServer.h"

#include <compare>
#include <cstdint>
#include <map>
#include <random>
#include <string>

namespace fernhollow::tests {

enum class Table { days, hours, applications };

/// A row of one of the tables that count, on a machine and on the backend. Hour and application are empty
/// where the table has no such column.
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

/// The backend of the machines: the wire contract over tables in memory, and the faults of the way to it.
///
/// Each machine has a base address of its own, so that its network can fail alone. Lives on the thread of the
/// machines, which asks it with their own HTTP client over the loopback interface.
class Backend {
public:
    explicit Backend(std::uint64_t seed);

    std::string urlFor(int machine) const { return server_.url() + "/" + std::to_string(machine); }
    void setNetwork(int machine, Network network);
    Network network(int machine) const;

    /// How many requests were received and will never be answered.
    std::size_t unanswered() const { return server_.unanswered(); }

    /// What the backend knows of a device, and of each of an account's.
    const Rows& rows(const std::string& email, const std::string& device);
    const std::map<std::string, Rows>& devices(const std::string& email);

    std::int64_t requests = 0;

private:
    using Request = RecordingServer::Request;
    using Answer = RecordingServer::Answer;

    struct Account {
        std::map<std::string, Rows> counts; // by device
        std::map<std::string, std::string> names;
        std::map<std::string, std::string> registered;
    };

    Answer answer(const Request& request);
    Answer handle(const Request& request, const std::string& name);
    Answer upsert(const nlohmann::json& row, const std::string& table);
    Answer select(const Request& request);
    Answer call(const nlohmann::json& parameters, const std::string& function);
    bool happens(unsigned percent) { return random_() % 100 < percent; }

    RecordingServer server_;
    std::mt19937_64 random_;
    std::map<int, Network> networks_;
    std::map<std::string, Account> accounts_; // by address
};

} // namespace fernhollow::tests
