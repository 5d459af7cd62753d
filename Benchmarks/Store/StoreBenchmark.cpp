// Measures each operation of the store on one file, called directly and awaited from the actor. Beside them
// it measures the bare statement, run directly and on another thread. Arguments: the database, its first and
// its last day, and then those of the benchmark library.

#include "../Floors/BareStatement.h"
#include "KeypressCore/DailyCountsDatabase.h"
#include "KeypressCore/DailyCountsStore.h"

#include <QCoreApplication>
#include <benchmark/benchmark.h>
#include <qcorotask.h>

#include <chrono>
#include <cstdint>
#include <map>
#include <string>
#include <sys/eventfd.h>
#include <thread>
#include <unistd.h>

namespace {

using namespace fernhollow;

// Few iterations, repeated often in random order, so that the noise of a shared machine affects all
// alike. There are fewer writes than it takes for SQLite to move its log into the file.
constexpr int iterations = 200;

constexpr std::int64_t now = 1'767'225'600;
constexpr int hour = 12;
const std::string application = "org.example.application7";
const std::string applicationTitle = "Application 7";

template<class Ask>
QCoro::Task<> awaitEach(benchmark::State& state, Ask ask) {
    for (auto _ : state) {
        co_await ask();
    }
    QCoreApplication::quit();
}

template<class Ask>
void runAwaiting(benchmark::State& state, Ask ask) {
    const auto task = awaitEach(state, std::move(ask));
    QCoreApplication::exec();
}

benchmark::internal::Benchmark* measure(const std::string& name, auto function) {
    return benchmark::RegisterBenchmark(name.c_str(), std::move(function))
        ->Iterations(iterations)
        ->MeasureProcessCPUTime()
        ->Unit(benchmark::kMicrosecond);
}

/// Takes as long as a statement, so that the asking thread is asleep when it is done.
void workForAWhile() {
    using std::chrono::steady_clock;
    const auto end = steady_clock::now() + std::chrono::microseconds(30);
    while (steady_clock::now() < end) {
    }
}

/// A thread that is asked, and answers, over eventfds: the cheapest object that two threads can wait for.
template<class Work>
void runBareHops(benchmark::State& state, Work work) {
    const int asked = ::eventfd(0, 0);
    const int answered = ::eventfd(0, 0);
    constexpr eventfd_t go = 1;
    constexpr eventfd_t end = 2;
    std::thread worker([&] {
        eventfd_t order = 0;
        while (::eventfd_read(asked, &order) == 0 && order == go) {
            work();
            ::eventfd_write(answered, 1);
        }
    });
    eventfd_t answer = 0;
    for (auto _ : state) {
        ::eventfd_write(asked, go);
        ::eventfd_read(answered, &answer);
    }
    ::eventfd_write(asked, end);
    worker.join();
    ::close(asked);
    ::close(answered);
}

template<class Bare, class Direct, class Ask>
void add(const std::string& name, const std::string& file, Bare bare, Direct direct, Ask ask) {
    measure(name + "/bare", [=](benchmark::State& state) {
        const auto db = bare::open(file.c_str());
        for (auto _ : state) {
            bare(db.get());
        }
    });
    measure(name + "/bare-awaited", [=](benchmark::State& state) {
        const auto db = bare::open(file.c_str());
        runBareHops(state, [&] { bare(db.get()); });
    });
    measure(name + "/direct", [=](benchmark::State& state) {
        DailyCountsDatabase database(file);
        for (auto _ : state) {
            direct(database);
        }
    });
    measure(name + "/awaited", [=](benchmark::State& state) {
        DailyCountsStore store(file);
        runAwaiting(state, [&] { return ask(store); });
    });
}

void addHop() {
    measure("hop/bare", [](benchmark::State& state) { runBareHops(state, workForAWhile); });
    measure("hop/direct", [](benchmark::State& state) {
        for (auto _ : state) {
            workForAWhile();
        }
    });
    measure("hop/awaited", [](benchmark::State& state) {
        SerialExecutor executor;
        runAwaiting(state, [&] { return executor.run(workForAWhile); });
    });
}

void replaceHourlyBare(sqlite3* db, const std::string& day, const std::map<int, std::int64_t>& counts) {
    sqlite3_exec(db, "BEGIN IMMEDIATE;", nullptr, nullptr, nullptr);
    bare::Statement(db, bare::deleteHourly).bind(1, day).run();
    bare::Statement insert(db, bare::insertHourly);
    for (const auto& [each, count] : counts) {
        insert.reset();
        insert.bind(1, day).bind(2, std::int64_t{each}).bind(3, count).bind(4, now).run();
    }
    sqlite3_exec(db, "COMMIT;", nullptr, nullptr, nullptr);
}

void addWrites(const std::string& file, const std::string& day) {
    const DayKey key(day);
    add(
        "increment", file,
        [=](sqlite3* db) {
            bare::Statement(db, bare::increment).bind(1, day).bind(2, std::int64_t{1}).bind(3, now).run();
        },
        [=](DailyCountsDatabase& database) { database.increment(key, 1, now); },
        [=](DailyCountsStore& store) { return store.increment(key, 1, now); });
    add(
        "overwrite", file,
        [=](sqlite3* db) {
            bare::Statement(db, bare::overwrite).bind(1, day).bind(2, std::int64_t{7}).bind(3, now).run();
        },
        [=](DailyCountsDatabase& database) { database.overwrite(key, 7, now); },
        [=](DailyCountsStore& store) { return store.overwrite(key, 7, now); });
    add(
        "incrementHourly", file,
        [=](sqlite3* db) {
            bare::Statement(db, bare::incrementHourly)
                .bind(1, day)
                .bind(2, std::int64_t{hour})
                .bind(3, std::int64_t{1})
                .bind(4, now)
                .run();
        },
        [=](DailyCountsDatabase& database) { database.incrementHourly(key, hour, 1, now); },
        [=](DailyCountsStore& store) { return store.incrementHourly(key, hour, 1, now); });
    std::map<int, std::int64_t> counts;
    for (int each = 0; each < 24; ++each) {
        counts[each] = 100 + each;
    }
    add(
        "replaceHourly", file, [=](sqlite3* db) { replaceHourlyBare(db, day, counts); },
        [=](DailyCountsDatabase& database) { database.replaceHourly(key, counts, now); },
        [=](DailyCountsStore& store) { return store.replaceHourly(key, counts, now); });
}

void addApplicationWrites(const std::string& file, const std::string& day) {
    const DayKey key(day);
    add(
        "incrementAppHourly", file,
        [=](sqlite3* db) {
            bare::Statement(db, bare::incrementAppHourly)
                .bind(1, day)
                .bind(2, std::int64_t{hour})
                .bind(3, application)
                .bind(4, std::int64_t{1})
                .bind(5, now)
                .run();
        },
        [=](DailyCountsDatabase& database) { database.incrementAppHourly(key, hour, application, 1, now); },
        [=](DailyCountsStore& store) { return store.incrementAppHourly(key, hour, application, 1, now); });
    add(
        "registerApp", file,
        [=](sqlite3* db) {
            bare::Statement(db, bare::registerApp)
                .bind(1, application)
                .bind(2, applicationTitle)
                .bind(3, now)
                .run();
        },
        [=](DailyCountsDatabase& database) { database.registerApp(application, applicationTitle, now); },
        [=](DailyCountsStore& store) { return store.registerApp(application, applicationTitle, now); });
}

void addReads(const std::string& file, const std::string& firstDay, const std::string& lastDay) {
    const DayKey first(firstDay);
    const DayKey last(lastDay);
    const auto consume = [](auto value) { benchmark::DoNotOptimize(value); };
    add(
        "count", file, [=](sqlite3* db) { consume(bare::Statement(db, bare::count).bind(1, lastDay).run()); },
        [=](DailyCountsDatabase& database) { consume(database.count(last)); },
        [=](DailyCountsStore& store) { return store.count(last); });
    add(
        "fetchCounts", file,
        [=](sqlite3* db) {
            consume(bare::Statement(db, bare::fetchCounts).bind(1, firstDay).bind(2, lastDay).run());
        },
        [=](DailyCountsDatabase& database) { consume(database.fetchCounts(first, last)); },
        [=](DailyCountsStore& store) { return store.fetchCounts(first, last); });
    add(
        "fetchHourlyCounts", file,
        [=](sqlite3* db) { consume(bare::Statement(db, bare::fetchHourlyCounts).bind(1, lastDay).run()); },
        [=](DailyCountsDatabase& database) { consume(database.fetchHourlyCounts(last)); },
        [=](DailyCountsStore& store) { return store.fetchHourlyCounts(last); });
    add(
        "fetchAppHourlyCounts", file,
        [=](sqlite3* db) { consume(bare::Statement(db, bare::fetchAppHourlyCounts).bind(1, lastDay).run()); },
        [=](DailyCountsDatabase& database) { consume(database.fetchAppHourlyCounts(last)); },
        [=](DailyCountsStore& store) { return store.fetchAppHourlyCounts(last); });
    add(
        "fetchAppRegistry", file,
        [=](sqlite3* db) { consume(bare::Statement(db, bare::fetchAppRegistry).run()); },
        [=](DailyCountsDatabase& database) { consume(database.fetchAppRegistry()); },
        [=](DailyCountsStore& store) { return store.fetchAppRegistry(); });
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication program(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (argc != 4) {
        std::fputs("store_benchmark DATABASE FIRST_DAY LAST_DAY\n", stderr);
        return EXIT_FAILURE;
    }
    addHop();
    addWrites(argv[1], argv[3]);
    addApplicationWrites(argv[1], argv[3]);
    addReads(argv[1], argv[2], argv[3]);
    benchmark::RunSpecifiedBenchmarks();
    return EXIT_SUCCESS;
}
