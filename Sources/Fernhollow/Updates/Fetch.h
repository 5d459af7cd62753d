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

/// Takes the body of an answer as it comes. An UpdateError that it throws cancels the answer.
class BodyReceiver {
public:
    virtual ~BodyReceiver() = default;
    virtual void begin(std::optional<std::uint64_t> length) = 0; ///< in bytes, if the server says
    virtual void take(std::string_view bytes) = 0;
};

/// Gets `url` (RFC 9110) and follows redirections within its origin. Throws UpdateError: with `failure` when
/// the answer is not "200 OK", is incomplete, or pauses for a minute; with cancelled after a stop; and
/// whatever `receiver` throws.
QCoro::Task<> fetch(QNetworkAccessManager& manager, Clock& clock, QUrl url, UpdateError::Reason failure,
                    BodyReceiver& receiver, std::stop_token stop);

} // namespace fernhollow
