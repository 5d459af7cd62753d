// The HTTP client of the machines: it asks the life's backend by a function call.
//
// A simulated day has hundreds of requests, which over sockets would take nearly all of its time. The tests
// of Support and the end-to-end tests cover the program's own client.

#include "Endurance/Backend.h"
#include "Support/EventLoopExecutor.h"
#include "Support/HttpSession.h"
#include "Support/Sleep.h"

#include <QNetworkAccessManager>

namespace fernhollow {
namespace {

/// Goes on with the next turn of the event loop.
QCoro::Task<> nextTurn() {
    EventLoopExecutor loop;
    co_await loop.run([] {});
}

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
    if (reply.isSilent) {
        co_await Sleep(clock_, request.timeout, stop);
    } else {
        co_await nextTurn();
    }
    --underWay_;
    if (stop.stop_requested() || !reply.answer) {
        throw TransportError(stop.stop_requested() ? "cancelled" : "the connection ended");
    }
    co_return *reply.answer;
}

} // namespace fernhollow
