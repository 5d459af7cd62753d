#pragma once

#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace fernhollow {

/// How a process was started, as far as the system shows it.
struct Process {
    std::string executable;             ///< the path of the program; empty when we may not see it
    std::vector<std::string> arguments; ///< the command line, the program's own name first
};

/// The process with the number `pid` on this machine; nothing when there is none.
std::optional<Process> readProcess(pid_t pid);

} // namespace fernhollow
