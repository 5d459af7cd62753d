#pragma once

#include <QNetworkAccessManager>
#include <QNetworkReply>

#include <memory>

class QNetworkRequest;

// What requests to the backend (HttpSession) and downloads of updates (Fetch) share. They wait for an answer
// in different ways. HttpSession keeps the whole answer in memory and sets it a time limit. Fetch hands the
// bytes on as they come, and goes on as long as any come.
namespace fernhollow {

/// Deletes a reply from the event loop, because one of its own functions may be running.
struct DeleteLater {
    void operator()(QNetworkReply* reply) const { reply->deleteLater(); }
};
using NetworkReply = std::unique_ptr<QNetworkReply, DeleteLater>;

/// A manager whose requests use the proxies of the system, except requests to this machine itself. A reply
/// belongs to the caller that asked for it.
std::unique_ptr<QNetworkAccessManager> makeNetworkAccess();

/// Sets `request` to follow no redirection by itself, to keep no cookie or password, and to use
/// HTTP/1.1.
void keepNothing(QNetworkRequest& request);

} // namespace fernhollow
