#include "local/HttpServer.h"
#include "local/Options.h"
#include "local/RestApi.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <iostream>
#include <sodium.h>

using namespace fernhollow::backend;

namespace {

/// A path as the log may show it: what a client typed in the place of a name is not shown.
std::string loggable(const std::string& path) {
    const bool isPlain = path.size() <= 100 && std::ranges::all_of(path, [](char c) {
                             return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_' || c == '/';
                         });
    return isPlain ? path : "(another path)";
}

Answer logged(const RestApi& api, const Request& request) {
    using namespace std::chrono;
    const auto started = steady_clock::now();
    auto answer = api.handle(request);
    const auto took = duration<double, std::milli>(steady_clock::now() - started).count();
    std::fprintf(stderr, "%s %s %d %.1f ms\n", request.method.c_str(), loggable(request.path).c_str(),
                 answer.status, took);
    return answer;
}

sigset_t blockEndingSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signals;
}

void serveUntilSignal(const Options& options) {
    const auto signals = blockEndingSignals(); // before there are other threads that could take one
    const Database database(options.database, std::chrono::seconds(10));
    database.expectReachable();
    const RestApi api(database, options.secret);
    HttpServer server({}, [&](const Request& request) {
        return options.isVerbose ? logged(api, request) : api.handle(request);
    });
    const int port = server.bind(options.port);
    auto serving = std::async(std::launch::async, [&] { server.serve(); });
    std::cout << "fernhollow-backend listening on http://127.0.0.1:" << port << std::endl;

    int signal = 0;
    sigwait(&signals, &signal);
    server.stop();
    if (serving.wait_for(std::chrono::milliseconds(500)) != std::future_status::ready) {
        std::_Exit(0); // a statement does not end; the database rolls it back
    }
}

} // namespace

int main(int argc, char** argv) {
    try {
        const Options options({argv + 1, argv + argc});
        if (options.wantsHelp) {
            std::cout << Options::help();
            return 0;
        }
        if (sodium_init() < 0) {
            throw std::runtime_error("the cryptographic library cannot be used");
        }
        serveUntilSignal(options);
        return 0;
    } catch (const std::invalid_argument& problem) {
        std::cerr << "fernhollow-backend: " << problem.what() << "; --help says more\n";
        return 2;
    } catch (const std::exception& problem) {
        std::cerr << "fernhollow-backend: " << problem.what() << '\n';
        return 1;
    }
}
