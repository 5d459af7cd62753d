#pragma once

#include <string>
#include <vector>

namespace fernhollow::backend {

/// The command line.
struct Options {
    std::string database;
    int port = 54321;
    std::string secret = "fernhollow-local-development-only-secret";
    bool isVerbose = false;
    bool wantsHelp = false;

    /// Throws std::invalid_argument with a sentence.
    explicit Options(const std::vector<std::string>& arguments);

    static const char* help();
};

} // namespace fernhollow::backend
