#include "Support/HttpSession.h"

#include "Support/Clock.h"
#include "Support/HttpManners.h"

#include <QNetworkRequest>

#include <coroutine>
#include <optional>

namespace fernhollow {
namespace {

QNetworkRequest networkRequest(const HttpRequest& request) {
    QNetworkRequest result(QUrl::fromEncoded(QByteArray::fromStdString(request.url)));
    for (const auto& [name, value] : request.headers) {
        result.setRawHeader(QByteArray::fromStdString(name), QByteArray::fromStdString(value));
    }
    keepNothing(result);
    return result;
}

/// Suspends until the reply has finished. Cancels the reply at the deadline, when a stop is requested, or
/// when it is too large.
class Completion {
public:
    Completion(QNetworkReply& reply, Clock& clock, std::chrono::seconds timeout, std::stop_token stop)
        : reply_(reply), clock_(clock), timeout_(timeout), stop_(std::move(stop)) {}

    bool await_ready() const { return false; }

    void await_suspend(std::coroutine_handle<> waiter) {
        // Queued, because cancelling finishes the reply while one of its functions is still running.
        QObject::connect(
            &reply_, &QNetworkReply::finished, &reply_, [waiter] { waiter.resume(); }, Qt::QueuedConnection);
        QObject::connect(&reply_, &QNetworkReply::readyRead, &reply_, [this] {
            if (static_cast<std::size_t>(reply_.bytesAvailable()) > HttpSession::maximumAnswer) {
                breakOff("the answer is too large");
            }
        });
        timer_ = clock_.startTimer(timeout_, [this] { breakOff("the request timed out"); });
        onStop_.emplace(stop_, Stop{this});
    }

    /// Why the reply was cancelled; empty when it was not.
    std::optional<std::string> await_resume() {
        onStop_.reset();
        timer_.reset();
        return reason_;
    }

private:
    struct Stop {
        Completion* completion;
        void operator()() const { completion->breakOff("cancelled"); }
    };

    void breakOff(const char* reason) {
        if (!reason_ && !reply_.isFinished()) {
            reason_ = reason;
            reply_.abort();
        }
    }

    QNetworkReply& reply_;
    Clock& clock_;
    std::chrono::seconds timeout_;
    std::stop_token stop_;
    std::unique_ptr<Clock::Timer> timer_;
    std::optional<std::stop_callback<Stop>> onStop_;
    std::optional<std::string> reason_;
};

// An answer with any status is an answer. Qt numbers the errors of the connection and the proxy below those
// of the server.
bool isTransportError(QNetworkReply::NetworkError error) {
    return error != QNetworkReply::NoError &&
           (error < QNetworkReply::ContentAccessDenied || error == QNetworkReply::ProtocolUnknownError ||
            error == QNetworkReply::ProtocolFailure);
}

} // namespace

HttpSession::HttpSession(Clock& clock) : clock_(clock) {}
HttpSession::~HttpSession() = default;

void HttpSession::close() {
    manager_.reset();
}

QNetworkAccessManager& HttpSession::manager() {
    if (!manager_) {
        manager_ = makeNetworkAccess();
    }
    return *manager_;
}

QCoro::Task<HttpAnswer> HttpSession::send(HttpRequest request, std::stop_token stop) {
    if (stop.stop_requested()) {
        throw TransportError("cancelled");
    }
    const auto wire = networkRequest(request);
    const NetworkReply reply(request.method == HttpRequest::Method::post
                                 ? manager().post(wire, QByteArray::fromStdString(request.body))
                                 : manager().get(wire));
    ++underWay_;
    const auto reason = co_await Completion(*reply, clock_, request.timeout, std::move(stop));
    --underWay_;
    if (reason) {
        throw TransportError(*reason);
    }
    const auto status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (isTransportError(reply->error()) || !status.isValid()) {
        throw TransportError(reply->errorString().toStdString());
    }
    co_return HttpAnswer{status.toInt(), reply->readAll().toStdString(),
                         reply->rawHeader("Retry-After").toStdString()};
}

} // namespace fernhollow
