#include "Support/HttpManners.h"

#include <QHostAddress>
#include <QNetworkProxyFactory>
#include <QNetworkRequest>

namespace fernhollow {
namespace {

class SystemProxies final : public QNetworkProxyFactory {
public:
    QList<QNetworkProxy> queryProxy(const QNetworkProxyQuery& query) override {
        const QString host = query.peerHostName();
        if (host == QLatin1StringView("localhost") || QHostAddress(host).isLoopback()) {
            return {QNetworkProxy::NoProxy};
        }
        return systemProxyForQuery(query);
    }
};

} // namespace

std::unique_ptr<QNetworkAccessManager> makeNetworkAccess() {
    auto manager = std::make_unique<QNetworkAccessManager>();
    manager->setProxyFactory(new SystemProxies);
    manager->setAutoDeleteReplies(false);
    return manager;
}

void keepNothing(QNetworkRequest& request) {
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
    // One request at a time needs no multiplexing (HTTP/2), and without it an aborted request ends its
    // connection at once.
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
}

} // namespace fernhollow
