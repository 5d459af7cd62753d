// The HTTP client of the machines: it asks the life's backend by a function call.
//
// A simulated day has hundreds of requests, which over sockets would take nearly all of its time. The tests
// of Support and the end-to-end tests cover the program's own client.

#include "Endurance/Backend.h"
#include "Support/Clock.h"
#include "Support/HttpSession.h"

#include <QCoreApplication>
#include <QNetworkAccessManager>

#include <coroutine>
#include <functional>
#include <optional>

namespace fernhollow {
namespace {

/// Suspends until the reply comes, in the next turn of the event loop. If none comes, suspends until the
/// time-out.
class Waiting {
public:
    Waiting(Clock& clock, std::chrono::seconds timeout, std::stop_token stop, bool isSilent)
        : clock_(clock), timeout_(timeout), stop_(std::move(stop)), isSilent_(isSilent) {}

    bool await_ready() const { return false; }
    void await_suspend(std::coroutine_handle<> waiter) {
        waiter_ = waiter;
        if (isSilent_) {
            timer_ = clock_.startTimer(timeout_, [this] { end(); });
            onStop_.emplace(stop_, [this] { end(); });
        } else {
            end();
        }
    }
    void await_resume() {
        onStop_.reset();
        timer_.reset();
    }

private:
    void end() {
        if (!std::exchange(isOver_, true)) {
            QMetaObject::invokeMethod(
                QCoreApplication::instance(), [waiter = waiter_] { waiter.resume(); }, Qt::QueuedConnection);
        }
    }

    Clock& clock_;
    std::chrono::seconds timeout_;
    std::stop_token stop_;
    bool isSilent_;
    bool isOver_ = false;
    std::coroutine_handle<> waiter_;
    std::unique_ptr<Clock::Timer> timer_;
    std::optional<std::stop_callback<std::function<void()>>> onStop_;
};

} // namespace

HttpSession::HttpSession(Clock& clock) : clock_(clock) {}
HttpSession::~HttpSession() = default;
void HttpSession::close() {}

QCoro::Task<HttpAnswer> HttpSession::send(HttpRequest request, std::stop_token stop) {
    if (stop.stop_requested()) {
        throw TransportError("cancelled");
    }
    const auto reply = tests::Backend::ask(request);
    ++underWay_;
    co_await Waiting(clock_, request.timeout, stop, reply.isSilent);
    --underWay_;
    if (stop.stop_requested() || !reply.answer) {
        throw TransportError(stop.stop_requested() ? "cancelled" : "the connection ended");
    }
    co_return *reply.answer;
}

} // namespace fernhollow
