#include "Updates/Fetch.h"

#include "Support/Clock.h"
#include "Support/HttpManners.h"
#include "Updates/WebOrigin.h"

#include <QNetworkRequest>

#include <chrono>
#include <coroutine>
#include <exception>
#include <memory>
#include <utility>

namespace fernhollow {
namespace {

using namespace std::chrono_literals;

constexpr int maximumRedirections = 5;
constexpr auto patience = 60s; // how long a server may send nothing
constexpr qint64 bufferSize = qint64{1} << 18;
constexpr int statusOk = 200;
constexpr int firstRedirection = 300;
constexpr int firstRefusal = 400;

int statusOf(const QNetworkReply& reply) {
    return reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
}

/// Suspends until the answer is complete or cancelled, and meanwhile hands its body to the receiver.
class Body {
public:
    Body(QNetworkReply& reply, Clock& clock, UpdateError::Reason failure, BodyReceiver& receiver,
         std::stop_token stop)
        : reply_(reply), clock_(clock), failure_(failure), receiver_(receiver), stop_(std::move(stop)) {}

    bool await_ready() const { return false; }

    void await_suspend(std::coroutine_handle<> waiter) {
        // Queued, because cancelling finishes the reply while one of its functions is still running.
        QObject::connect(
            &reply_, &QNetworkReply::finished, &reply_, [waiter] { waiter.resume(); }, Qt::QueuedConnection);
        QObject::connect(
            &reply_, &QNetworkReply::metaDataChanged, &reply_, [this] { guard([this] { begin(); }); },
            Qt::QueuedConnection);
        QObject::connect(&reply_, &QNetworkReply::readyRead, &reply_, [this] { guard([this] { take(); }); });
        watch();
        onStop_.emplace(stop_, Stop{this});
    }

    /// Throws the reason when the answer was cancelled.
    void await_resume() {
        onStop_.reset();
        timer_.reset();
        if (!reason_) {
            guard([this] { take(); }); // the bytes that came with the end
        }
        if (reason_) {
            std::rethrow_exception(reason_);
        }
    }

private:
    struct Stop {
        Body* body;
        void operator()() const { body->breakOff(UpdateError(UpdateError::Reason::cancelled, "Cancelled.")); }
    };

    template<class Work>
    void guard(Work work) {
        try {
            work();
        } catch (const UpdateError& error) {
            breakOff(error);
        }
    }

    void breakOff(const UpdateError& error) {
        if (!reason_) {
            reason_ = std::make_exception_ptr(error);
            abort();
        }
    }

    // Queued, because one of the reply's functions may be running, and it would then fail twice.
    void abort() {
        QMetaObject::invokeMethod(
            &reply_,
            [&reply = reply_] {
                if (reply.isRunning()) {
                    reply.abort();
                }
            },
            Qt::QueuedConnection);
    }

    void begin() {
        if (statusOf(reply_) != statusOk || std::exchange(hasBegun_, true)) {
            return;
        }
        const QVariant length = reply_.header(QNetworkRequest::ContentLengthHeader);
        receiver_.begin(length.isValid() ? std::optional(length.toULongLong()) : std::nullopt);
    }

    void take() {
        if (reason_ || !reply_.isOpen()) {
            return; // cancelled
        }
        isAlive_ = true;
        const QByteArray bytes = reply_.readAll();
        if (statusOf(reply_) == statusOk) {
            begin();
            receiver_.take({bytes.constData(), static_cast<std::size_t>(bytes.size())});
        } else if (statusOf(reply_) != 0) {
            abort(); // nothing reads the text of a refusal, and it may be endless
        }
    }

    // Each tick checks whether anything came since the last one.
    void watch() {
        timer_ = clock_.startTimer(patience, [this] {
            if (!std::exchange(isAlive_, false)) {
                breakOff(UpdateError(failure_, "The update server stopped answering."));
            } else {
                watch();
            }
        });
    }

    QNetworkReply& reply_;
    Clock& clock_;
    UpdateError::Reason failure_;
    BodyReceiver& receiver_;
    std::stop_token stop_;
    std::unique_ptr<Clock::Timer> timer_;
    std::optional<std::stop_callback<Stop>> onStop_;
    std::exception_ptr reason_;
    bool hasBegun_ = false;
    bool isAlive_ = false;
};

QNetworkRequest requestFor(const QUrl& url) {
    QNetworkRequest request(url);
    keepNothing(request);
    // Qt would unpack a compressed body, which can become a thousand times as long.
    request.setRawHeader("Accept-Encoding", "identity");
    return request;
}

/// The address that the answer redirects to; absent when it does not redirect.
std::optional<QUrl> redirection(const QNetworkReply& reply, const QUrl& from, UpdateError::Reason failure) {
    const int status = statusOf(reply);
    const QUrl target = reply.attribute(QNetworkRequest::RedirectionTargetAttribute).toUrl();
    if (status < firstRedirection || status >= firstRefusal || target.isEmpty()) {
        return std::nullopt;
    }
    QUrl next = from.resolved(target);
    if (!isSameOrigin(next, from)) {
        throw UpdateError(failure, "The update server redirects to another place: " +
                                       next.toString(QUrl::FullyEncoded).toStdString());
    }
    return next;
}

void checkAnswer(const QNetworkReply& reply, UpdateError::Reason failure) {
    const int status = statusOf(reply);
    if (status != 0 && status != statusOk) {
        throw UpdateError(failure, "The update server answers with " + std::to_string(status) + ".");
    }
    if (status == 0 || reply.error() != QNetworkReply::NoError) {
        throw UpdateError(failure,
                          "The update server cannot be reached: " + reply.errorString().toStdString() + ".");
    }
}

} // namespace

QCoro::Task<> fetch(QNetworkAccessManager& manager, Clock& clock, QUrl url, UpdateError::Reason failure,
                    BodyReceiver& receiver, std::stop_token stop) {
    if (!isProtectedOnItsWay(url)) {
        throw UpdateError(failure, "Updates are not downloaded from " +
                                       url.toString(QUrl::FullyEncoded).toStdString() + ".");
    }
    if (stop.stop_requested()) {
        throw UpdateError(UpdateError::Reason::cancelled, "Cancelled.");
    }
    for (int redirections = 0; redirections <= maximumRedirections; ++redirections) {
        const NetworkReply reply(manager.get(requestFor(url)));
        reply->setReadBufferSize(bufferSize);
        co_await Body(*reply, clock, failure, receiver, stop);
        const auto next = redirection(*reply, url, failure);
        if (!next) {
            checkAnswer(*reply, failure);
            co_return;
        }
        url = *next;
    }
    throw UpdateError(failure, "The update server redirects in circles.");
}

} // namespace fernhollow
