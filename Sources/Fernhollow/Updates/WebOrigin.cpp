#include "Updates/WebOrigin.h"

#include <QHostAddress>

namespace fernhollow {
namespace {

constexpr int httpPort = 80;
constexpr int httpsPort = 443;

int portOf(const QUrl& url) {
    return url.port(url.scheme() == QLatin1StringView("https") ? httpsPort : httpPort);
}

} // namespace

bool isSameOrigin(const QUrl& left, const QUrl& right) {
    return left.scheme() == right.scheme() && left.host() == right.host() && portOf(left) == portOf(right);
}

bool isProtectedOnItsWay(const QUrl& url) {
    if (!url.isValid() || url.host().isEmpty()) {
        return false;
    }
    const bool isThisMachine =
        url.host() == QLatin1StringView("localhost") || QHostAddress(url.host()).isLoopback();
    return url.scheme() == QLatin1StringView("https") ||
           (url.scheme() == QLatin1StringView("http") && isThisMachine);
}

} // namespace fernhollow
