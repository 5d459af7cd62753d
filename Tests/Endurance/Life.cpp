// The script of a life: when the person types, on which machine, and when the machines rest.

#include "Endurance/Life.h"

#include <algorithm>
#include <array>
#include <sstream>
#include <tuple>

namespace fernhollow::tests {
namespace {

using namespace std::chrono_literals;

constexpr const char* firstZone = "Europe/Berlin";
constexpr std::array addresses = {"ana@example.com", "bo+keys@example.org"};
constexpr std::array apps = {"org.editor", "org.terminal", "com.Browser", "org.mail", ""};

} // namespace

Life::Life(Options options)
    : options_(options), random_(options.seed), backend_(options.seed), calendar_(firstZone),
      midnight_(at(firstZone, {.year = 2026, .month = 1, .day = 20})), now_(midnight_) {
    const std::size_t count = 2 + below(4);
    for (std::size_t number = 0; number < count; ++number) {
        const auto home = folder_.filePath(QString::number(number)).toStdString();
        machines_.push_back(std::make_unique<Machine>(static_cast<int>(number), home, backend_, now_));
        machines_.back()->start(addresses.at(happens(15) ? 1 : 0));
    }
    conditions_.resize(count);
}

std::string Life::dayOf(Instant at) const {
    return DayKey(at, calendar_).rawValue;
}

Instant Life::localHour(Instant midnight, double hour) const {
    return midnight + std::chrono::seconds(static_cast<std::int64_t>(hour * 3600));
}

void Life::liveDay() {
    endMorningTrouble();
    for (const Event& event : plan()) {
        passTo(event.at, *machines_[event.machine]);
        if (event.fault != nullptr) {
            happen(*event.fault, event.machine);
        } else {
            work(*machines_[event.machine]);
        }
    }
    ++days_;
    midnight_ = calendar_.startOfDay(localHour(midnight_, 36));
    for (const auto& machine : machines_) {
        passTo(midnight_ + 10min, *machine);
    }
    beQuiet();
    constexpr std::int64_t month = 30;
    compare(days_ % month == 0 ? "" : dayOf(midnight_ - std::chrono::hours(24 * 9)));
    for (const auto& machine : machines_) {
        compareAccount(machine->email());
    }
}

std::vector<Life::Event> Life::plan() {
    std::vector<Event> events;
    const bool isFree = (days_ + 1) % 7 < 2 || happens(4);
    for (std::size_t number = 0; number < machines_.size(); ++number) {
        for (std::uint64_t burst = below(isFree ? 2 : 4); burst > 0; --burst) {
            events.push_back({localHour(midnight_, 7 + static_cast<double>(below(1500)) / 100), number});
        }
        if (happens(10)) { // typing past midnight, in any zone
            events.push_back({localHour(midnight_, static_cast<double>(below(24))) - 7s, number});
        }
        addFaults(events, number);
    }
    std::ranges::sort(events, {},
                      [](const Event& event) { return std::tuple(event.at, event.machine, event.fault); });
    std::erase_if(events, [this](const Event& event) { return event.at < now_; });
    return events;
}

// The others catch up when it is their turn, because machines do not affect each other directly.
void Life::passTo(Instant at, Machine& machine) {
    now_ = std::max(now_, at);
    machine.passTo(now_, happens(20));
}

void Life::work(Machine& machine) {
    constexpr std::array pauses = {200ms, 900ms, 1000ms, 2500ms, 15000ms, 16000ms};
    if (!machine.isRunning()) {
        return;
    }
    for (std::uint64_t chunk = 1 + below(3); chunk > 0; --chunk) {
        const auto count = static_cast<std::int64_t>(1 + below(400));
        machine.press(apps.at(below(apps.size())), count);
        presses_ += count;
        const auto pause = pauses.at(below(pauses.size()));
        now_ += pause;
        machine.passTo(now_);
    }
}

void Life::endMorningTrouble() {
    for (std::size_t number = 0; number < machines_.size(); ++number) {
        Machine& machine = *machines_[number];
        Condition& condition = conditions_[number];
        if (!machine.isRunning() && happens(80)) {
            condition.hadTrouble = true;
            start(machine);
        }
        condition.daysAway = std::max(condition.daysAway - 1, 0);
        if (condition.daysAway == 0) {
            backend_.setNetwork(machine.number, Network::fine);
        }
    }
}

// Long enough for a flush, a cycle after it, and the longest pause after trouble.
void Life::beQuiet() {
    constexpr std::array usual = {16s, 1s, 1s};
    constexpr std::array afterTrouble = {16s, 1s, 1s, 61s, 1s, 1s, 61s, 1s, 1s};
    for (std::size_t number = 0; number < machines_.size(); ++number) {
        Machine& machine = *machines_[number];
        machine.setDiskFull(false);
        if (conditions_[number].daysAway == 0 && backend_.network(machine.number) != Network::fine) {
            backend_.setNetwork(machine.number, Network::fine);
        }
        if (!machine.isRunning()) {
            continue;
        }
        for (const auto step : usual) {
            machine.pass(step);
        }
        for (const auto step : afterTrouble) {
            if (conditions_[number].hadTrouble) {
                machine.pass(step);
            }
        }
    }
    now_ += 4min; // enough for the slowest machine
}

void Life::compare(const std::string& firstDay) {
    for (std::size_t number = 0; number < machines_.size(); ++number) {
        Machine& machine = *machines_[number];
        const bool isReached = machine.isRunning() && backend_.network(machine.number) == Network::fine;
        for (auto& [key, tally] : machine.tallies) {
            const auto& [email, device] = key;
            const bool isCurrent = email == machine.email() && device == machine.device();
            std::optional<Rows> local;
            if (isCurrent && machine.isRunning()) {
                local = machine.rows(firstDay);
            }
            constexpr auto recentDays = std::chrono::hours(24 * 28); // two less, for zones and clocks
            const std::string recent = dayOf(midnight_ - recentDays);
            const bool isSynced = (isCurrent && isReached) || tally.isRetired();
            if (const auto difference =
                    tally.compare(local, backend_.rows(email, device), {isSynced, firstDay, recent})) {
                contradict(machine, *difference, email, device);
            }
        }
        if (isReached) {
            compareDirectory(machine);
        }
        conditions_[number].hadTrouble = !isReached;
    }
}

// Checks what belongs to the counts: the number that is shown, the machine and the names of its applications.
void Life::compareDirectory(Machine& machine) {
    const auto refuse = [&](const char* where, const Place& place, std::int64_t least, std::int64_t found) {
        if (found < least) {
            contradict(machine, {where, place, least, least, found}, machine.email(), machine.device());
        }
    };
    // The number may also contain the counts of other machines.
    const std::string today = machine.day();
    for (const auto& [place, count] : machine.rows(today)) {
        if (place.table == Table::days && place.day == today) {
            refuse("shown", place, count, machine.shown());
        }
    }
    for (const auto& [place, count] : backend_.rows(machine.email(), machine.device())) {
        if (count > 0) {
            refuse("backend, devices", place, 1,
                   backend_.isRegistered(machine.email(), machine.device()) ? 1 : 0);
        }
        if (count > 0 && place.table == Table::applications) {
            const bool isNamed = backend_.nameOf(machine.email(), place.app) == "Name of " + place.app;
            refuse("backend, names", place, 1, isNamed ? 1 : 0);
        }
    }
}

// Rows of an identity that no machine has had would count presses twice.
void Life::compareAccount(const std::string& email) {
    for (const auto& [device, rows] : backend_.devices(email)) {
        const bool isKnown = std::ranges::any_of(
            machines_, [&](const auto& machine) { return machine->tallies.contains({email, device}); });
        const auto row = std::ranges::find_if(rows, [](const auto& entry) { return entry.second != 0; });
        if (!isKnown && row != rows.end()) {
            contradict(*machines_[0], {"backend, unknown device", row->first, 0, 0, row->second}, email,
                       device);
        }
    }
}

void Life::contradict(const Machine& machine, const Difference& difference, const std::string& email,
                      const std::string& device) {
    constexpr std::array tables = {"daily", "hourly", "applications"};
    const Place& place = difference.place;
    std::ostringstream text;
    text << "seed " << options_.seed << ", day " << days_ << " (" << dayOf(midnight_ - 1h) << "), machine "
         << machine.number << " of " << email << " as " << device << "\n  " << difference.where << ", "
         << tables.at(static_cast<std::size_t>(place.table)) << ", " << place.day;
    if (place.hour >= 0) {
        text << " hour " << place.hour << " " << place.app;
    }
    text << ": expected " << difference.least << " to " << difference.most << ", found " << difference.found
         << "\n";
    if (options_.isVerbose) {
        text << machine.log();
    }
    throw Contradiction(text.str());
}

std::string Life::history() const {
    std::string text;
    for (const std::string& line : history_) {
        text += "  " + line + "\n";
    }
    return text;
}

std::string Life::takeReport() {
    std::ostringstream text;
    text << machines_.size() << " machines, " << std::exchange(presses_, 0) << " presses, "
         << std::exchange(backend_.requests, 0) << " requests";
    for (const auto& [name, count] : std::exchange(faults_, {})) {
        text << ", " << count << " " << name;
    }
    return text.str();
}

} // namespace fernhollow::tests
