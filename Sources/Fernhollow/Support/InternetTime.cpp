#include "Support/InternetTime.h"

#include <array>
#include <ctime>

namespace fernhollow {
namespace {

using namespace std::chrono;

/// Reads a text of fixed columns from the left.
class Columns {
public:
    explicit Columns(std::string_view text) : rest_(text) {}

    /// Takes the next `count` digits as a number.
    int digits(std::size_t count) {
        int number = 0;
        for (std::size_t i = 0; i < count; ++i) {
            const char character = next();
            isRight_ = isRight_ && character >= '0' && character <= '9';
            number = number * 10 + (character - '0');
        }
        return number;
    }

    /// Takes the next character; NUL at the end.
    char next() {
        const char character = rest_.empty() ? '\0' : rest_.front();
        rest_.remove_prefix(rest_.empty() ? 0 : 1);
        return character;
    }

    void expect(char character) { isRight_ = next() == character && isRight_; }
    void require(bool condition) { isRight_ = isRight_ && condition; }
    bool isRight() const { return isRight_ && rest_.empty(); }

private:
    std::string_view rest_;
    bool isRight_ = true;
};

year_month_day readDate(Columns& columns) {
    const int theYear = columns.digits(4);
    columns.expect('-');
    const auto theMonth = static_cast<unsigned>(columns.digits(2));
    columns.expect('-');
    const auto theDay = static_cast<unsigned>(columns.digits(2));
    return year(theYear) / month(theMonth) / day(theDay);
}

minutes readHourAndMinute(Columns& columns) {
    const int hour = columns.digits(2);
    columns.expect(':');
    const int minute = columns.digits(2);
    columns.require(hour < 24 && minute < 60);
    return hours(hour) + minutes(minute);
}

minutes readOffset(Columns& columns) {
    const char sign = columns.next();
    if (sign == 'Z') {
        return minutes(0);
    }
    columns.require(sign == '+' || sign == '-');
    return readHourAndMinute(columns) * (sign == '-' ? -1 : 1);
}

} // namespace

std::string internetTime(Instant instant) {
    const std::time_t seconds =
        std::chrono::system_clock::to_time_t(std::chrono::floor<std::chrono::seconds>(instant));
    std::tm utc{};
    gmtime_r(&seconds, &utc);
    std::array<char, 32> text{};
    const std::size_t length = std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &utc);
    return {text.data(), length};
}

std::optional<Instant> parseInternetTime(std::string_view text) {
    Columns columns(text);
    const year_month_day date = readDate(columns);
    columns.expect('T');
    const minutes ofDay = readHourAndMinute(columns);
    columns.expect(':');
    const seconds second(columns.digits(2));
    const minutes offset = readOffset(columns);
    if (!columns.isRight() || !date.ok() || second >= minutes(1)) {
        return std::nullopt;
    }
    const sys_seconds instant = sys_days(date) + ofDay + second - offset;
    if (instant <= ceil<seconds>(Instant::min()) || instant >= floor<seconds>(Instant::max())) {
        return std::nullopt;
    }
    return instant;
}

} // namespace fernhollow
