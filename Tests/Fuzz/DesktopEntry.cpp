// Desktop entry files: the words of a command survive being quoted and split again, and whatever a file holds
// can be shown.

#include "Fuzz.h"
#include "Platform/Applications/CommandLine.h"
#include "Platform/Applications/DesktopEntryFile.h"
#include "Platform/Applications/Identifier.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace fernhollow::fuzz {
namespace {

const std::array<std::string, 2> locales{"pt_BR", "pt"};

std::string quoted(const std::vector<std::string>& words) {
    std::string line;
    for (const std::string& word : words) {
        line += " \"";
        for (const char sign : word) {
            line += sign == '"' || sign == '\\' ? std::string{'\\', sign} : std::string{sign};
        }
        line += '"';
    }
    return line;
}

} // namespace

void check(std::string_view input) {
    const DesktopEntryFile entry = parseDesktopEntry(input, locales);
    const auto words = splitExec(entry.exec);
    require(splitExec(quoted(words)) == words, "quoted words are split into the same words");
    const CommandProgram command = programOf(words);
    require(command.program.empty() || std::ranges::find(words, command.program) != words.end(),
            "the program is one of the words");

    const std::string shown = plainIdentifier(entry.name);
    require(isUtf8(shown) && shown.size() <= 255, "a name is a short text");
    require(std::ranges::none_of(shown, [](char sign) { return sign >= 0 && sign < ' '; }),
            "a name has no control characters");
}

} // namespace fernhollow::fuzz
