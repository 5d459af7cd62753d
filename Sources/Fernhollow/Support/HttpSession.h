#pragma once

#include <qcorotask.h>

#include <chrono>
#include <cstddef>
#include <memory>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <utility>
#include <vector>

class QNetworkAccessManager;

namespace fernhollow {

class Clock;

/// A request of the Hypertext Transfer Protocol (RFC 9110).
struct HttpRequest {
    enum class Method { get, post };

    Method method = Method::get;
    std::string url;                                          ///< absolute, percent-encoded
    std::vector<std::pair<std::string, std::string>> headers; ///< in the order in which they are sent
    std::string body;                                         ///< of a post
    std::chrono::seconds timeout{60}; ///< from sending the request until the answer is complete
};

/// A complete answer, whatever its status.
struct HttpAnswer {
    int status = 0;
    std::string body;
    std::string retryAfter{}; ///< the field Retry-After, as it came; empty without one

    bool isSuccess() const { return status >= 200 && status <= 299; }
};

/// There was no complete answer: no route, refused, TLS failure, time-out, cut short, too large, or stopped.
class TransportError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Sends requests and keeps the connections open for the next ones. Lives on one thread, which has an event
/// loop.
///
/// It follows no redirection, keeps no cookies and stores nothing. It uses the proxies of the
/// system, except for requests to this machine itself.
class HttpSession {
public:
    /// In bytes. A genuine answer of the backend is never that large; a larger one is cancelled.
    static constexpr std::size_t maximumAnswer = std::size_t{8} << 20;

    explicit HttpSession(Clock& clock);
    ~HttpSession();

    /// The answer to `request`. Throws TransportError, also as soon as a stop is requested.
    QCoro::Task<HttpAnswer> send(HttpRequest request, std::stop_token stop);

    /// How many requests are waiting for their answer.
    std::size_t underWay() const { return underWay_; }

    /// Closes the connections. Only for the session's own thread, when no request is under way.
    void close();

private:
    QNetworkAccessManager& manager();

    Clock& clock_;
    std::size_t underWay_ = 0;
    std::unique_ptr<QNetworkAccessManager> manager_; // created by the session's thread when first needed
};

} // namespace fernhollow
