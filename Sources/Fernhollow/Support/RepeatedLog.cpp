#include "Support/RepeatedLog.h"

#include <chrono>

namespace fernhollow {
namespace {

using namespace std::chrono_literals;

// Six lines of a kind in an hour say as much as one a second would.
constexpr auto detailInterval = 10min;

} // namespace

bool RepeatedLog::isDue(std::string_view subject, std::int64_t detail, Instant now) {
    if (last_ && last_->subject == subject) {
        const bool isRecent = now >= last_->at && now - last_->at < detailInterval;
        if (isRecent || last_->detail == detail) {
            return false;
        }
    }
    last_ = Logged{std::string(subject), detail, now};
    return true;
}

} // namespace fernhollow
