#include "Model/DeviceInfo.h"
#include "Support/FakeClock.h"

#include <gmock/gmock.h>

#include <ostream>

namespace fernhollow {
namespace {

using tests::at;
using tests::FakeClock;

struct SeenCase {
    const char* text;
    const char* seen; ///< "now" when the text says nothing
};

void PrintTo(const SeenCase& seen, std::ostream* out) {
    *out << '"' << seen.text << '"';
}

class LastSeen : public testing::TestWithParam<SeenCase> {};

TEST_P(LastSeen, IsReadStrictlyOrIsNow) {
    FakeClock clock(at("UTC", {.year = 2030, .month = 1, .day = 1}));
    const DeviceInfo device{"id", "name", GetParam().text};
    const std::string seen = GetParam().seen;
    EXPECT_EQ(internetTime(device.lastSeenDate(clock)), seen == "now" ? "2030-01-01T00:00:00Z" : seen);
    if (seen == "now") {
        clock.advance(std::chrono::hours(1));
        EXPECT_EQ(device.lastSeenDate(clock), clock.now());
    }
}

INSTANTIATE_TEST_SUITE_P(
    Texts, LastSeen,
    testing::Values(SeenCase{"2026-03-05T14:07:09Z", "2026-03-05T14:07:09Z"},
                    SeenCase{"2026-03-05T14:07:09+00:00", "2026-03-05T14:07:09Z"},
                    SeenCase{"2026-03-05T14:07:09-03:30", "2026-03-05T17:37:09Z"},
                    SeenCase{"2026-01-01T00:30:00+05:45", "2025-12-31T18:45:00Z"},
                    SeenCase{"2024-02-29T23:59:59Z", "2024-02-29T23:59:59Z"},
                    SeenCase{"1969-12-31T23:59:58Z", "1969-12-31T23:59:58Z"},
                    SeenCase{"2026-03-05T14:07:09.123Z", "now"}, SeenCase{"2026-03-05T14:07:09", "now"},
                    SeenCase{"2026-03-05 14:07:09Z", "now"}, SeenCase{"2026-03-05T14:07:09+0300", "now"},
                    SeenCase{"2026-03-05T14:07:09+24:00", "now"}, SeenCase{"2026-03-05T14:07:09Z ", "now"},
                    SeenCase{"2026-02-29T00:00:00Z", "now"}, SeenCase{"2026-13-01T00:00:00Z", "now"},
                    SeenCase{"2026-00-10T00:00:00Z", "now"}, SeenCase{"2026-03-05T24:00:00Z", "now"},
                    SeenCase{"2026-03-05T14:60:00Z", "now"}, SeenCase{"2026-03-05T14:07:60Z", "now"},
                    SeenCase{"2026-+3-05T14:07:09Z", "now"}, SeenCase{"9999-12-31T23:59:59Z", "now"},
                    SeenCase{"0001-01-01T00:00:00Z", "now"}, SeenCase{"2026-03-05", "now"},
                    SeenCase{"yesterday", "now"}, SeenCase{"", "now"}));

} // namespace
} // namespace fernhollow
