// Fills a database with the counts of a person who types a lot: 30 days up to today, 25 applications,
// ten hours a day. Argument: the database. Prints the first and the last day.

#include "KeypressCore/Calendar.h"
#include "KeypressCore/DailyCountsDatabase.h"
#include "KeypressCore/SQLiteConnection.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>

namespace {

using namespace fernhollow;

constexpr int days = 30;
constexpr int applications = 25;
constexpr int firstHour = 8;
constexpr int lastHour = 17;

std::string identifier(int application) {
    return "org.example.application" + std::to_string(application);
}

void addDay(DailyCountsDatabase& database, const DayKey& day) {
    std::int64_t total = 0;
    for (int hour = firstHour; hour <= lastHour; ++hour) {
        std::int64_t inHour = 0;
        for (int application = 0; application < applications; ++application) {
            const std::int64_t count = 10 + application * hour;
            database.incrementAppHourly(day, hour, identifier(application), count, 1);
            inHour += count;
        }
        database.incrementHourly(day, hour, inHour, 1);
        total += inHour;
    }
    database.increment(day, total, 1);
}

void makeHistory(const char* file) {
    const auto calendar = Calendar::autoupdatingCurrent();
    const Instant now = SystemClock().now();
    DailyCountsDatabase database{file};
    for (int application = 0; application < applications; ++application) {
        database.registerApp(identifier(application), "Application " + std::to_string(application), 1);
    }
    for (int age = days - 1; age >= 0; --age) {
        const DayKey day(calendar.addingDays(now, -age).value(), calendar);
        addDay(database, day);
        if (age == 0 || age == days - 1) {
            std::puts(day.rawValue.c_str());
        }
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        return EXIT_FAILURE;
    }
    try {
        makeHistory(argv[1]);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", argv[1], error.what());
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
