#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace fernhollow {

/// The words of a desktop entry's `Exec` value, unquoted and without the field codes that stand alone.
/// Empty when the value is malformed.
std::vector<std::string> splitExec(std::string_view exec);

/// What a command line really runs.
struct CommandProgram {
    std::string program;       ///< the script where an interpreter runs one, else the program; as written
    bool hasArguments = false; ///< whether more follows
    bool operator==(const CommandProgram&) const = default;
};

/// Looks through `env` and interpreters. The program is empty when an interpreter runs no script.
CommandProgram programOf(std::span<const std::string> words);

bool isInterpreter(std::string_view program);

/// "/usr/bin/foo" is "foo".
std::string_view baseName(std::string_view path);

} // namespace fernhollow
