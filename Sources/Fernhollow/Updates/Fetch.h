#pragma once

#include "Updates/UpdateError.h"

#include <QUrl>
#include <qcorotask.h>

#include <cstdint>
#include <optional>
#include <stop_token>
#include <string_view>

class QNetworkAccessManager;

namespace fernhollow {

class Clock;

/// Takes the body of an answer as it comes. What it throws, an UpdateError, breaks the answer off.
class BodyReceiver {
public:
    virtual ~BodyReceiver() = default;
    virtual void begin(std::optional<std::uint64_t> length) = 0; ///< in bytes, where the server tells
    virtual void take(std::string_view bytes) = 0;
};

/// Gets `url` (RFC 9110) and follows redirections within its origin. Throws UpdateError: `failure` when the
/// answer is not "200 OK", does not come whole or stays away for a minute; cancelled; what `receiver` throws.
QCoro::Task<> fetch(QNetworkAccessManager& manager, Clock& clock, QUrl url, UpdateError::Reason failure,
                    BodyReceiver& receiver, std::stop_token stop);

} // namespace fernhollow
