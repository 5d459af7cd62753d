#include "local/HttpServer.h"

#include "local/RequestStream.h"

#include <cerrno>
#include <cstdio>
#include <limits>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>

namespace fernhollow::backend {

namespace {

constexpr auto json = "application/json; charset=utf-8";
constexpr auto address = "127.0.0.1";
constexpr std::size_t headerBytes = 64UL * 1024;
// A body that is too large is read and dropped up to here, so that its sender gets to read why.
constexpr std::size_t bodiesSkipped = 8;

// Without SO_REUSEPORT, which the library would set: two servers must not share one port.
void shareNoPort(socket_t socket) {
    const int yes = 1;
    setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
}

/// Mends what the library would stumble over, before it reads the body. False when what follows the
/// head cannot be told from the next request, so that the connection has to end with this one.
bool prepare(httplib::Request& request) {
    request.ranges.clear(); // answers come whole
    request.headers.erase("Content-Encoding");
    const bool hasBody = request.has_header("Content-Length") || request.has_header("Transfer-Encoding");
    if (request.method == "GET" || request.method == "HEAD" || request.method == "OPTIONS") {
        return !hasBody || request.get_header_value("Content-Length") == "0";
    }
    if (!hasBody) {
        request.headers.emplace("Content-Length", "0");
    }
    return true;
}

bool isReadable(socket_t socket) {
    pollfd state{socket, POLLIN, 0};
    return poll(&state, 1, 0) != 0;
}

/// The library answers some requests itself, without a body.
void explain(const httplib::Request&, httplib::Response& response) {
    if (response.body.empty()) {
        const std::string message = response.status == 413   ? "The request is too large"
                                    : response.status >= 500 ? "Internal error"
                                                             : "The request cannot be read";
        response.set_content(R"({"message":")" + message + "\"}", json);
    }
}

Request fromLibrary(const httplib::Request& request) {
    const auto question = request.target.find('?');
    return {request.method,
            request.path,
            question == std::string::npos ? "" : request.target.substr(question + 1),
            request.get_header_value("apikey"),
            request.get_header_value("Authorization"),
            request.get_header_value("Content-Type"),
            request.get_header_value("Prefer"),
            request.body};
}

} // namespace

/// The library's threads. They end first, and what they left waiting after them.
class HttpServer::Workers : public httplib::TaskQueue {
public:
    Workers(HttpServer& server, std::size_t count) : server_(server), pool_(count) {}

    void enqueue(std::function<void()> task) override { pool_.enqueue(std::move(task)); }

    void shutdown() override {
        pool_.shutdown();
        server_.idle_.reset();
    }

private:
    HttpServer& server_;
    httplib::ThreadPool pool_;
};

HttpServer::HttpServer(ServerLimits limits, Handler handler) : limits_(limits), handler_(std::move(handler)) {
    const Server::Handler respondTo = [this](const httplib::Request& request, httplib::Response& response) {
        respond(request, response);
    };
    Get(".*", respondTo);
    Options(".*", respondTo);
    Post(".*", respondTo);
    Put(".*", respondTo);
    Patch(".*", respondTo);
    Delete(".*", respondTo);
    set_error_handler(Server::Handler(explain));
    set_payload_max_length(limits_.bodyBytes);
    set_keep_alive_timeout(std::chrono::duration_cast<std::chrono::seconds>(limits_.idleTime).count());
    set_keep_alive_max_count(std::numeric_limits<int>::max());
    set_tcp_nodelay(true);
    set_socket_options(shareNoPort);
    new_task_queue = [this] { return workers_ = new Workers(*this, limits_.workers); };
}

HttpServer::~HttpServer() = default;

int HttpServer::bind(int port) {
    errno = 0;
    const int bound = port == 0 ? bind_to_any_port(address) : bind_to_port(address, port) ? port : -1;
    if (bound <= 0) {
        const auto reason = std::generic_category().message(errno);
        throw std::runtime_error("port " + std::to_string(port) + " of 127.0.0.1 cannot be had: " + reason);
    }
    ::listen(svr_sock_, SOMAXCONN); // the library's own queue holds five
    return bound;
}

void HttpServer::serve() {
    idle_ = std::make_unique<IdleConnections>(
        limits_.idleConnections, limits_.idleTime, [this](Descriptor socket) {
            // Shared because a task has to be copyable; a task that never runs closes it, too.
            const auto shared = std::make_shared<Descriptor>(std::move(socket));
            workers_->enqueue([this, shared] { process_and_close_socket(shared->release()); });
        });
    listen_after_bind();
}

void HttpServer::stop() {
    Server::stop();
}

bool HttpServer::process_and_close_socket(socket_t socket) {
    Descriptor connection(socket);
    if (isReadable(socket) && !answerAll(socket)) {
        return false;
    }
    if (svr_sock_ != INVALID_SOCKET) {
        idle_->add(std::move(connection));
    }
    return true;
}

/// Answers what has come; false when the connection has to end.
bool HttpServer::answerAll(socket_t socket) {
    RequestStream stream(socket, headerBytes + bodiesSkipped * limits_.bodyBytes, limits_.requestTime);
    do {
        stream.begin();
        bool isClosing = false;
        bool isClear = false; // stays so for a head that cannot be read
        const bool isGood = process_request(stream, false, isClosing,
                                            [&](httplib::Request& request) { isClear = prepare(request); });
        if (!isGood || isClosing || !isClear || stream.hasFailed()) {
            return false;
        }
    } while (stream.hasMore());
    return true;
}

void HttpServer::respond(const httplib::Request& request, httplib::Response& response) const {
    if (request.body.size() > limits_.bodyBytes) { // in chunks, which the library does not limit
        response.status = 413;
        return;
    }
    try {
        const auto answer = handler_(fromLibrary(request));
        response.status = answer.status;
        response.set_content(answer.body, json);
        for (const auto& [name, value] : answer.headers) {
            response.set_header(name, value);
        }
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "fernhollow-backend: a request failed unexpectedly: %s\n", problem.what());
        response.status = 500;
    }
}

} // namespace fernhollow::backend
