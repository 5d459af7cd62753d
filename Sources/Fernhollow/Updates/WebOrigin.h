#pragma once

#include <QUrl>

namespace fernhollow {

/// Whether both addresses have the same scheme, host and port: the same origin (RFC 6454).
bool isSameOrigin(const QUrl& left, const QUrl& right);

/// Whether what comes from there cannot be changed on its way: over HTTPS, or from this machine itself.
bool isProtectedOnItsWay(const QUrl& url);

} // namespace fernhollow
