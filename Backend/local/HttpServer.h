#pragma once

#include "local/Http.h"
#include "local/IdleConnections.h"

#include <chrono>
#include <functional>
#include <httplib.h>
#include <memory>

namespace fernhollow::backend {

struct ServerLimits {
    std::size_t workers = 8; // each with a connection to the database
    std::size_t idleConnections = 400;
    std::size_t bodyBytes = 1UL << 20;
    std::chrono::milliseconds requestTime{20'000};
    std::chrono::milliseconds idleTime{60'000};
};

/// The HTTP server on 127.0.0.1. A worker reads, answers and goes on to the next client; a connection
/// that is kept alive waits without one.
///
/// bind(), then serve() on a thread of its own, which ends after stop() from another. The handler is
/// called by all workers at once.
class HttpServer : private httplib::Server {
public:
    using Handler = std::function<Answer(const Request&)>;

    HttpServer(ServerLimits limits, Handler handler);
    ~HttpServer() override;

    /// Port 0 takes any free one. Returns the port; throws std::runtime_error with a sentence.
    int bind(int port);
    void serve();
    void stop(); // from any thread

private:
    class Workers;

    bool process_and_close_socket(socket_t socket) override;
    bool answerAll(socket_t socket);
    void respond(const httplib::Request& request, httplib::Response& response) const;

    ServerLimits limits_;
    Handler handler_;
    Workers* workers_ = nullptr; // while serve() runs; owned by the library
    std::unique_ptr<IdleConnections> idle_;
};

} // namespace fernhollow::backend
