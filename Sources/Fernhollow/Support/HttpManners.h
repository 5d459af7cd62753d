#pragma once

#include <QNetworkAccessManager>
#include <QNetworkReply>

#include <memory>

class QNetworkRequest;

// What the requests to the backend (HttpSession) and the downloads of updates (Fetch) share. How they wait
// for an answer differs in every point: one has a time in which the whole answer has to come and keeps it in
// memory; the other has none, hands on what comes and goes on for as long as anything comes.
namespace fernhollow {

/// Deleted later, because it may be at work.
struct DeleteLater {
    void operator()(QNetworkReply* reply) const { reply->deleteLater(); }
};
using NetworkReply = std::unique_ptr<QNetworkReply, DeleteLater>;

/// Requests pass through the proxies of the system, but not those to this machine itself. Replies belong to
/// those who asked.
std::unique_ptr<QNetworkAccessManager> makeNetworkAccess();

/// No redirection is followed by itself, no cookie or password is kept, and one request needs no
/// multiplexing.
void keepNothing(QNetworkRequest& request);

} // namespace fernhollow
