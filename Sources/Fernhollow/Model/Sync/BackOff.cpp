#include "Model/Sync/BackOff.h"

#include <QDateTime>
#include <QLocale>
#include <QString>
#include <QTimeZone>

#include <algorithm>

namespace fernhollow {
namespace {

using namespace std::chrono_literals;

constexpr std::chrono::seconds longestPause = 60s;

// A mistaken or hostile backend must not silence a machine for good.
constexpr std::chrono::seconds longestRequest = 1h;

} // namespace

void BackOff::lengthen(Moment now, std::chrono::seconds atLeast) {
    until_ = std::max(until_, now + std::max(next_, atLeast));
    next_ = std::min(next_ * 2, longestPause);
}

std::chrono::milliseconds BackOff::remaining(Moment now) const {
    return std::max<std::chrono::milliseconds>(std::chrono::ceil<std::chrono::milliseconds>(until_ - now),
                                               0ms);
}

std::chrono::seconds retryAfter(std::string_view field, Instant now) {
    const auto text = QString::fromLatin1(field.data(), static_cast<qsizetype>(field.size())).trimmed();
    bool isNumber = false;
    std::chrono::seconds asked{text.toLongLong(&isNumber)};
    if (!isNumber) {
        auto date = QLocale::c().toDateTime(text, QStringLiteral("ddd, dd MMM yyyy hh:mm:ss 'GMT'"));
        date.setTimeZone(QTimeZone::utc());
        asked = date.isValid() ? std::chrono::seconds(date.toSecsSinceEpoch() - unixSeconds(now)) : 0s;
    }
    return std::clamp(asked, 0s, longestRequest);
}

} // namespace fernhollow
