#include "Model/DeviceInfo.h"
#include "Support/Testing.h"

#include <utility>
#include <vector>

namespace fernhollow::tests {
namespace {

TEST(LastSeen, IsReadStrictlyOrIsNow) {
    const std::vector<std::pair<const char*, const char*>> readable{
        {"2026-03-05T14:07:09Z", "2026-03-05T14:07:09Z"},
        {"2026-03-05T14:07:09+00:00", "2026-03-05T14:07:09Z"},
        {"2026-03-05T14:07:09-03:30", "2026-03-05T17:37:09Z"},
        {"2026-01-01T00:30:00+05:45", "2025-12-31T18:45:00Z"},
        {"2024-02-29T23:59:59Z", "2024-02-29T23:59:59Z"},
        {"1969-12-31T23:59:58Z", "1969-12-31T23:59:58Z"}};
    FakeClock clock(at("UTC", {.year = 2030, .month = 1, .day = 1}));
    for (const auto& [text, seen] : readable) {
        EXPECT_EQ(internetTime(DeviceInfo{"id", "name", text}.lastSeenDate(clock)), seen) << text;
    }
    for (const char* text :
         {"2026-03-05T14:07:09.123Z", "2026-03-05T14:07:09", "2026-03-05 14:07:09Z",
          "2026-03-05T14:07:09+0300", "2026-03-05T14:07:09+24:00", "2026-03-05T14:07:09Z ",
          "2026-02-29T00:00:00Z", "2026-13-01T00:00:00Z", "2026-00-10T00:00:00Z", "2026-03-05T24:00:00Z",
          "2026-03-05T14:60:00Z", "2026-03-05T14:07:60Z", "2026-+3-05T14:07:09Z", "9999-12-31T23:59:59Z",
          "0001-01-01T00:00:00Z", "2026-03-05", ""}) {
        clock.advance(std::chrono::hours(1));
        EXPECT_EQ((DeviceInfo{"id", "name", text}.lastSeenDate(clock)), clock.now()) << text;
    }
}

} // namespace
} // namespace fernhollow::tests
