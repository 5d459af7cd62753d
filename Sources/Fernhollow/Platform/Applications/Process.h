#pragma once

#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace fernhollow {

/// How a process was started, as far as the system lets us see.
struct Process {
    std::string executable;             ///< the path of what runs; empty when it is not ours to see
    std::vector<std::string> arguments; ///< the command line, the program's own name first
};

/// The process of this machine with the number `pid`; nothing when there is none.
std::optional<Process> readProcess(pid_t pid);

} // namespace fernhollow
