#pragma once

#include <QUrl>

namespace fernhollow {

/// Whether both addresses have the same scheme, host and port: the same origin (RFC 6454).
bool isSameOrigin(const QUrl& left, const QUrl& right);

/// Whether nothing on the way can change what comes from `url`: it uses HTTPS, or is on this machine itself.
bool isProtectedOnItsWay(const QUrl& url);

} // namespace fernhollow
