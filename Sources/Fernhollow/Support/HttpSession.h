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
    std::chrono::seconds timeout{60}; ///< from the beginning until the answer is complete
};

/// A complete answer, whatever its status.
struct HttpAnswer {
    int status = 0;
    std::string body;
    std::string retryAfter{}; ///< the field of that name, as it came

    bool isSuccess() const { return status >= 200 && status <= 299; }
};

/// No answer, or none that is complete: no route, refused, TLS failure, time-out, cut short, too large.
class TransportError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Sends requests over connections that it keeps open. Lives on one thread with an event loop.
///
/// Follows no redirection, keeps no cookies and stores nothing. Proxies are those of the system, but
/// for this machine itself.
class HttpSession {
public:
    /// An honest answer of the backend never reaches this size; a larger one is cancelled.
    static constexpr std::size_t maximumAnswer = std::size_t{8} << 20;

    explicit HttpSession(Clock& clock);
    ~HttpSession();

    /// The answer to `request`. Throws TransportError, also as soon as a stop is requested.
    QCoro::Task<HttpAnswer> send(HttpRequest request, std::stop_token stop);

    /// How many requests wait for their answer.
    std::size_t underWay() const { return underWay_; }

    /// Closes the connections; for the session's own thread, when nothing is under way.
    void close();

private:
    QNetworkAccessManager& manager();

    Clock& clock_;
    std::size_t underWay_ = 0;
    std::unique_ptr<QNetworkAccessManager> manager_; // made by its thread, when first needed
};

} // namespace fernhollow
