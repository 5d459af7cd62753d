#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace fernhollow {

/// The words of a desktop entry's `Exec` value (Desktop Entry Specification), unquoted and without
/// field codes that are words of their own. Empty when the value is malformed.
std::vector<std::string> splitExec(std::string_view exec);

/// The program that a command line runs in the end.
struct CommandProgram {
    std::string program;       ///< the script where an interpreter runs one, else the program; as written
    bool hasArguments = false; ///< true when more words follow
    bool operator==(const CommandProgram&) const = default;
};

/// Skips `env` and interpreters to find the program. It is empty when an interpreter runs no script.
CommandProgram programOf(std::span<const std::string> words);

/// True for a shell or another program that runs scripts, such as "python3.11".
bool isInterpreter(std::string_view program);

/// The last part of a path: "foo" of "/usr/bin/foo".
std::string_view baseName(std::string_view path);

} // namespace fernhollow
