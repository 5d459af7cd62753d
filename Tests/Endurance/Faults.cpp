// The faults in a life, how often they happen, and what each may cost.

#include "Endurance/Life.h"

#include <array>

namespace fernhollow::tests {
namespace {

using namespace std::chrono_literals;

constexpr std::array addresses = {"ana@example.com", "bo+keys@example.org"};

} // namespace

/// A new fault needs its row in the table below.
struct Life::Kind {
    const char* name;
    unsigned perThousand; ///< of a machine's days
    Loss daysAndHours;    ///< the most it may cost those tables
    Loss applications;
    void (Life::*happen)(std::size_t number);
};

// Only kills and power cuts may cost presses. Where a file is lost or replaced by an old one, the backend
// has to give back its days; Tally::allowLossOfFile allows for that.
const std::vector<Life::Kind>& Life::kinds() {
    static const std::vector<Kind> kinds = {
        {"restarts", 150, Loss::none, Loss::none, &Life::restart},
        {"nights off", 150, Loss::none, Loss::none, &Life::shutDown},
        {"kills", 60, Loss::unasked, Loss::lastSecond, &Life::kill},
        {"power cuts", 40, Loss::lastFlush, Loss::lastFlush, &Life::cutPower},
        {"network faults", 250, Loss::none, Loss::none, &Life::changeNetwork},
        {"offline spells", 10, Loss::none, Loss::none, &Life::goAway},
        {"full disks", 15, Loss::none, Loss::none, &Life::fillDisk},
        {"flights", 15, Loss::none, Loss::none, &Life::fly},
        {"clock changes", 10, Loss::none, Loss::none, &Life::resetClock},
        {"backups", 30, Loss::none, Loss::none, &Life::backUp},
        {"restored backups", 10, Loss::none, Loss::none, &Life::restoreBackup},
        {"cloned homes", 5, Loss::none, Loss::none, &Life::cloneHome},
        {"deleted databases", 5, Loss::none, Loss::none, &Life::deleteDatabase},
        {"lost settings", 10, Loss::none, Loss::none, &Life::loseSettings},
        {"account changes", 10, Loss::none, Loss::none, &Life::changeAccount},
    };
    return kinds;
}

void Life::addFaults(std::vector<Event>& events, std::size_t machine) {
    const auto add = [&](const Kind& kind) {
        events.push_back({localHour(midnight_, static_cast<double>(below(2400)) / 100), machine, &kind});
    };
    for (std::size_t kind = 0; kind < kinds().size(); ++kind) {
        const bool isDue = options_.hasEveryFault && days_ < 7 && static_cast<int>(kind % 7) == days_ &&
                           kind % machines_.size() == machine;
        if (below(1000) < kinds()[kind].perThousand || isDue) {
            add(kinds()[kind]);
        }
    }
}

void Life::happen(const Kind& kind, std::size_t number) {
    Machine& machine = *machines_[number];
    if (!machine.isRunning()) {
        return;
    }
    const auto minutes = std::chrono::floor<std::chrono::minutes>(now_ - midnight_).count();
    history_.push_back(dayOf(now_) + " +" + std::to_string(minutes) + " min: " + kind.name + ", machine " +
                       std::to_string(number) + " of " + machine.email() + " as " +
                       machine.device().substr(0, 4));
    constexpr std::size_t remembered = 25;
    if (history_.size() > remembered && !options_.isVerbose) {
        history_.pop_front();
    }
    ++faults_[kind.name];
    conditions_[number].hadTrouble = true;
    if (kind.daysAndHours != Loss::none) {
        for (const auto pause : {1000ms, 300ms}) { // presses of different ages, some of which must be safe
            machine.press("org.mail", static_cast<std::int64_t>(1 + below(50)));
            machine.pass(pause);
        }
        machine.press("org.mail", 1);
        machine.beginToPress(std::array{0ms, 1000ms, 15000ms}.at(below(3)), "org.editor",
                             static_cast<std::int64_t>(1 + below(300)));
        machine.tally().allow(kind.daysAndHours, kind.applications);
    }
    (this->*kind.happen)(number);
}

// When a home returns to its machine, it finds the identity and the old databases that were kept for it.
void Life::start(Machine& machine) {
    machine.start(addresses[0]);
    endRetirement(machine);
}

void Life::endRetirement(Machine& machine) {
    if (machine.tally().isRetired()) {
        machine.tally().allowLossOfFile("", backend_.rows(machine.email(), machine.device()));
    }
}

void Life::restart(std::size_t number) {
    shutDown(number);
    start(*machines_[number]);
}

void Life::shutDown(std::size_t number) {
    machines_[number]->setDiskFull(false);
    work(*machines_[number]);
    machines_[number]->end();
}

void Life::kill(std::size_t number) {
    machines_[number]->kill();
    machines_[number]->setDiskFull(false);
    start(*machines_[number]);
}

void Life::cutPower(std::size_t number) {
    machines_[number]->cutPower();
    machines_[number]->setDiskFull(false);
    start(*machines_[number]);
}

void Life::changeNetwork(std::size_t number) {
    constexpr std::array networks = {Network::cut,          Network::unavailable, Network::limited,
                                     Network::unauthorized, Network::flaky,       Network::silent,
                                     Network::portal};
    if (conditions_[number].daysAway == 0) {
        backend_.setNetwork(static_cast<int>(number), networks.at(below(networks.size())));
    }
}

void Life::goAway(std::size_t number) {
    conditions_[number].daysAway = static_cast<int>(1 + below(20));
    backend_.setNetwork(static_cast<int>(number), Network::cut);
}

void Life::fillDisk(std::size_t number) {
    machines_[number]->setDiskFull(true);
}

void Life::fly(std::size_t number) {
    constexpr std::array zones = {"Europe/Berlin",      "America/New_York", "Asia/Tokyo",
                                  "Asia/Kathmandu",     "Pacific/Apia",     "Australia/Lord_Howe",
                                  "America/Los_Angeles"};
    machines_[number]->zone = zones.at(below(zones.size()));
}

void Life::resetClock(std::size_t number) {
    constexpr std::array<std::chrono::minutes, 6> skews = {0min, 37min, -40min, 3h, -4h, 26h};
    machines_[number]->setSkew(skews.at(below(skews.size())));
}

std::string Life::backupOf(std::size_t number) const {
    return folder_.filePath(QStringLiteral("backup") + QString::number(number)).toStdString();
}

void Life::backUp(std::size_t number) {
    Machine& machine = *machines_[number];
    machine.setDiskFull(false);
    machine.pass(16s);
    machine.copyHomeTo(backupOf(number));
    conditions_[number].backupDay = machine.day();
    conditions_[number].backupOf = machine.email() + machine.device();
}

void Life::restoreBackup(std::size_t number) {
    Machine& machine = *machines_[number];
    if (conditions_[number].backupOf != machine.email() + machine.device()) {
        return;
    }
    restart(number);
    machine.end();
    machine.replaceHome(backupOf(number));
    for (auto& [key, tally] : machine.tallies) {
        if (!tally.isRetired()) {
            tally.allowLossOfFile(conditions_[number].backupDay, backend_.rows(key.first, key.second));
        }
    }
    start(machine);
}

void Life::cloneHome(std::size_t number) {
    const std::size_t other = (number + 1) % machines_.size();
    shutDown(number);
    if (machines_[other]->isRunning()) {
        shutDown(other);
    }
    machines_[other]->retireTallies();
    const std::string copy = folder_.filePath(QStringLiteral("copy")).toStdString();
    machines_[number]->copyHomeTo(copy);
    machines_[other]->replaceHome(copy);
    conditions_[other].hadTrouble = true;
    start(*machines_[number]);
    start(*machines_[other]);
}

void Life::deleteDatabase(std::size_t number) {
    Machine& machine = *machines_[number];
    machine.setDiskFull(false);
    machine.deleteDatabase();
    machine.tally().allowLossOfFile("", backend_.rows(machine.email(), machine.device()));
    machine.press("org.editor", 1);
}

void Life::loseSettings(std::size_t number) {
    shutDown(number);
    machines_[number]->loseSettings();
    machines_[number]->start(machines_[number]->email());
}

void Life::changeAccount(std::size_t number) {
    Machine& machine = *machines_[number];
    machine.setDiskFull(false);
    machine.pass(16s); // otherwise presses that were not flushed would be discarded
    machine.signIn(addresses.at(machine.email() == addresses[0] ? 1 : 0));
    endRetirement(machine);
}

} // namespace fernhollow::tests
