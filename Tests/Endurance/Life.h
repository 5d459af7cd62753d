#pragma once

#include "Endurance/Backend.h"
#include "Endurance/Machine.h"

#include <QTemporaryDir>

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace fernhollow::tests {

/// A table differs from what is expected; what() says where, and which faults came before.
class Contradiction : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A person's machines over days and years, scripted from a seed.
///
/// After each midnight of the first zone, and a quiet time in which everything can be sent, it compares the
/// tables of each machine and of the backend with the presses that were made. One thread; owned by the test
/// program.
class Life {
public:
    struct Options {
        std::uint64_t seed = 1;
        bool hasEveryFault = false; ///< true to have each kind of fault in the first week
        bool isVerbose = false;
    };

    explicit Life(Options options);

    /// Simulates the next day. Throws Contradiction.
    void liveDay();

    std::string day() const { return dayOf(midnight_); }
    /// "presses ..., requests ..., faults ..." since the last call.
    std::string takeReport();
    /// The last faults, a line each.
    std::string history() const;

private:
    struct Kind;
    struct Event {
        Instant at;
        std::size_t machine = 0;
        const Kind* fault = nullptr; // null for presses
    };
    /// The states of a machine that end by themselves some time later.
    struct Condition {
        int daysAway = 0;        // without a network
        bool hadTrouble = false; // since the last comparison
        std::string backupDay;   // empty without a backup
        std::string backupOf;    // the identity
    };

    static const std::vector<Kind>& kinds();

    std::vector<Event> plan();
    void addFaults(std::vector<Event>& events, std::size_t machine);
    void passTo(Instant at, Machine& machine);
    void work(Machine& machine);
    void happen(const Kind& kind, std::size_t number);
    void restart(std::size_t number);
    void shutDown(std::size_t number);
    void kill(std::size_t number);
    void cutPower(std::size_t number);
    void changeNetwork(std::size_t number);
    void goAway(std::size_t number);
    void fillDisk(std::size_t number);
    void fly(std::size_t number);
    void resetClock(std::size_t number);
    void cloneHome(std::size_t number);
    void backUp(std::size_t number);
    void restoreBackup(std::size_t number);
    void deleteDatabase(std::size_t number);
    void loseSettings(std::size_t number);
    void changeAccount(std::size_t number);
    void start(Machine& machine);
    void endRetirement(Machine& machine);
    std::string backupOf(std::size_t number) const;
    void beQuiet();
    void compare(const std::string& firstDay);
    void compareDirectory(Machine& machine);
    void compareAccount(const std::string& email);
    [[noreturn]] void contradict(const Machine& machine, const Difference& difference,
                                 const std::string& email, const std::string& device);
    void endMorningTrouble();
    std::string dayOf(Instant at) const;
    Instant localHour(Instant midnight, double hour) const;
    std::uint64_t below(std::uint64_t limit) { return random_() % limit; }
    bool happens(unsigned percent) { return below(100) < percent; }

    Options options_;
    std::mt19937_64 random_;
    QTemporaryDir folder_;
    Backend backend_;
    Calendar calendar_;
    Instant midnight_; // the beginning of the day that is simulated next
    Instant now_;
    int days_ = 0;
    std::vector<std::unique_ptr<Machine>> machines_;
    std::vector<Condition> conditions_;
    std::deque<std::string> history_;
    std::map<std::string, int> faults_; // since the last report
    std::int64_t presses_ = 0;
};

} // namespace fernhollow::tests
