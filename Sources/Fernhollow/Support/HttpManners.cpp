#include "Support/HttpManners.h"

#include <QHostAddress>
#include <QNetworkAccessManager>
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

void useSystemProxies(QNetworkAccessManager& manager) {
    manager.setProxyFactory(new SystemProxies);
}

void keepNothing(QNetworkRequest& request) {
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
    // One request at a time needs no multiplexing, and an aborted one then ends its connection at once.
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
}

} // namespace fernhollow
