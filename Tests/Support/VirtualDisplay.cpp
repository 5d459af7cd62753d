#include "Support/VirtualDisplay.h"

#include <array>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fernhollow::test {
namespace {

constexpr int longestStart = 20'000; // milliseconds, for a machine under load
constexpr int longestEnd = 5'000;

// The line that the server writes once it is ready: its display number.
std::string readNumber(int from) {
    std::string text;
    while (!text.ends_with('\n')) {
        pollfd ready{from, POLLIN, 0};
        if (::poll(&ready, 1, longestStart) <= 0) {
            return {};
        }
        std::array<char, 16> buffer{};
        const ssize_t size = ::read(from, buffer.data(), buffer.size());
        if (size <= 0) {
            return {};
        }
        text.append(buffer.data(), static_cast<std::size_t>(size));
    }
    text.pop_back();
    return text;
}

} // namespace

VirtualDisplay::VirtualDisplay(const std::vector<std::string>& options) {
    std::array<int, 2> report{};
    if (::pipe2(report.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe for Xvfb");
    }
    start(options, report[1]);
    ::close(report[1]);
    const std::string number = readNumber(report[0]);
    ::close(report[0]);
    if (number.empty()) {
        kill();
        throw std::runtime_error("Xvfb does not start");
    }
    name_ = ":" + number;
}

VirtualDisplay::~VirtualDisplay() {
    kill();
}

void VirtualDisplay::start(const std::vector<std::string>& options, int reportTo) {
    const std::string reportNumber = std::to_string(reportTo);
    std::vector<std::string> words{"Xvfb", "-displayfd", reportNumber, "-noreset",   "-nolisten",
                                   "tcp",  "-screen",    "0",          "1024x768x24"};
    words.insert(words.end(), options.begin(), options.end());
    std::vector<char*> arguments;
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);

    server_ = ::fork();
    if (server_ < 0) {
        throw std::runtime_error("no process for Xvfb");
    }
    if (server_ == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL); // a crashed test leaves no server behind
        ::fcntl(reportTo, F_SETFD, 0);
        const int quiet = ::open("/dev/null", O_RDWR);
        if (quiet >= 0) {
            ::dup2(quiet, STDOUT_FILENO);
            ::dup2(quiet, STDERR_FILENO);
        }
        ::execvp(arguments.front(), arguments.data());
        ::_exit(127);
    }
}

void VirtualDisplay::kill() {
    if (server_ < 0) {
        return;
    }
    // The orderly way removes its socket and lock file.
    ::kill(server_, SIGTERM);
    for (int waited = 0; ::waitpid(server_, nullptr, WNOHANG) == 0; waited += 5) {
        if (waited == longestEnd) {
            ::kill(server_, SIGKILL);
        }
        ::poll(nullptr, 0, 5);
    }
    server_ = -1;
}

} // namespace fernhollow::test
