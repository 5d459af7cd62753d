// The least that reading the figures again each second can cost: only the statements and the request
// of one refresh each second, and the requests of one cycle each minute. Arguments: the database, the
// first and the last of its days, the backend's port.

#include "BareRequest.h"
#include "BareStatement.h"

#include <cstdint>
#include <ctime>
#include <string>

int main(int argc, char** argv) {
    using namespace fernhollow;
    if (argc != 5) {
        return EXIT_FAILURE;
    }
    const char* const first = argv[2];
    const char* const today = argv[3];
    const auto db = bare::open(argv[1]);
    timespec next{};
    clock_gettime(CLOCK_MONOTONIC, &next);
    bare::Connection backend(std::atoi(argv[4]));
    const std::string account = R"({"p_email":"you@example.org")";
    const std::string day = account + R"(,"p_day":")" + today + "\"}";
    const std::string days = account + R"(,"p_days":30,"p_end_day":")" + today + "\"}";
    const std::string device = R"({"customer_email":"you@example.org","device_id":"a floor","device_name":)"
                               R"("floor","last_seen_at":"2026-03-05T00:00:00Z"})";
    std::int64_t sum = 0;
    for (int second = 0; sum >= 0; ++second) {
        sum = bare::Statement(db.get(), bare::count).bind(1, today).run();
        sum += bare::Statement(db.get(), bare::fetchCounts).bind(1, first).bind(2, today).run();
        sum += bare::Statement(db.get(), bare::fetchAppHourlyCounts).bind(1, today).run();
        sum += bare::Statement(db.get(), bare::fetchAppRegistry).run();
        backend.post("rpc/get_account_devices", account + "}");
        if (second % 60 == 0) {
            backend.post("rpc/get_account_today_total", day);
            backend.post("rpc/get_account_daily_totals", days);
            backend.post("rpc/get_account_hourly_totals", day);
            backend.post("rpc/get_account_app_hourly_totals", day);
            backend.post("rpc/get_account_app_daily_totals", days);
            backend.post("devices?on_conflict=customer_email,device_id", device);
            backend.post("rpc/get_account_devices", account + "}");
        }
        ++next.tv_sec;
        clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &next, nullptr);
    }
    return EXIT_FAILURE;
}
