#include "local/Options.h"

#include <charconv>
#include <stdexcept>

namespace fernhollow::backend {

namespace {

int parsePort(const std::string& text) {
    int port = -1;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    if (error != std::errc() || end != text.data() + text.size() || port < 0 || port > 65535) {
        throw std::invalid_argument("--port takes a number from 0 to 65535");
    }
    return port;
}

} // namespace

Options::Options(const std::vector<std::string>& arguments) {
    for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
        const auto value = [&] {
            if (argument + 1 == arguments.end()) {
                throw std::invalid_argument(*argument + " takes a value");
            }
            return *++argument;
        };
        if (*argument == "--database") {
            database = value();
        } else if (*argument == "--port") {
            port = parsePort(value());
        } else if (*argument == "--secret") {
            secret = value();
        } else if (*argument == "--verbose") {
            isVerbose = true;
        } else if (*argument == "--help") {
            wantsHelp = true;
        } else {
            throw std::invalid_argument("unknown argument " + *argument);
        }
    }
    if (database.empty() && !wantsHelp) {
        throw std::invalid_argument("--database is missing");
    }
    if (secret.empty()) {
        throw std::invalid_argument("--secret must not be empty");
    }
}

const char* Options::help() {
    return R"(usage: fernhollow-backend --database STRING [--port N] [--secret S] [--verbose]

Serves a PostgreSQL database at http://127.0.0.1:PORT/rest/v1 as PostgREST would, as far as Fernhollow
asks. For development and tests: it is not made for the internet.

  --database STRING   libpq connection string of a role that may become those of the requests
  --port N            54321 if it is not given; 0 takes any free port
  --secret S          signs the keys of clients; the one for local development if it is not given
  --verbose           a line on stderr for each request: what was called and how it ended
)";
}

} // namespace fernhollow::backend
