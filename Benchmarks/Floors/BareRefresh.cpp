// The least that reading the figures again each second can cost: the statements of one refresh, bare.
// Arguments: the database, the first and the last of its days.

#include "BareStatement.h"

#include <ctime>

int main(int argc, char** argv) {
    using namespace fernhollow;
    if (argc != 4) {
        return EXIT_FAILURE;
    }
    const char* const first = argv[2];
    const char* const today = argv[3];
    const auto db = bare::open(argv[1]);
    timespec next{};
    clock_gettime(CLOCK_MONOTONIC, &next);
    std::int64_t sum = 0;
    while (sum >= 0) {
        sum = bare::Statement(db.get(), bare::count).bind(1, today).run();
        sum += bare::Statement(db.get(), bare::fetchCounts).bind(1, first).bind(2, today).run();
        sum += bare::Statement(db.get(), bare::fetchAppHourlyCounts).bind(1, today).run();
        sum += bare::Statement(db.get(), bare::fetchAppRegistry).run();
        ++next.tv_sec;
        clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &next, nullptr);
    }
    return EXIT_FAILURE;
}
