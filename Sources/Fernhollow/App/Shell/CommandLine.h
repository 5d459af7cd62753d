#pragma once

#include "App/Shell/SingleInstance.h"

#include <optional>

namespace fernhollow {

/// What the arguments ask for.
struct CommandLine {
    std::optional<InstanceRequest> request{}; ///< --toggle, --pause, --resume or --quit
    std::optional<int> exitCode{};            ///< set when the answer was given and nothing is left to do

    /// Answers --help, --version, --today, --export and wrong arguments itself.
    static CommandLine parse(int argc, char** argv);
};

} // namespace fernhollow
