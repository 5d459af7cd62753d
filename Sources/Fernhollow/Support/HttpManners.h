#pragma once

class QNetworkAccessManager;
class QNetworkRequest;

namespace fernhollow {

/// Lets requests pass through the proxies of the system, but not those to this machine itself.
void useSystemProxies(QNetworkAccessManager& manager);

/// No redirection is followed by itself, no cookie or password is kept, and one request needs no
/// multiplexing.
void keepNothing(QNetworkRequest& request);

} // namespace fernhollow
