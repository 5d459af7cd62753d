// Desktop entry files: what is decoded survives being written and decoded again, the words of a command
// survive being quoted and split again, and whatever a file holds can be shown.

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

std::string escaped(const std::string& text) {
    std::string result;
    for (const char sign : text) {
        switch (sign) {
        case ' ':
            result += "\\s";
            break;
        case '\n':
            result += "\\n";
            break;
        case '\t':
            result += "\\t";
            break;
        case '\r':
            result += "\\r";
            break;
        case '\\':
            result += "\\\\";
            break;
        default:
            result += sign;
        }
    }
    return result;
}

std::string written(const DesktopEntryFile& entry) {
    return "[Desktop Entry]\nName=" + escaped(entry.name) + "\nStartupWMClass=" + escaped(entry.windowClass) +
           "\nExec=" + escaped(entry.exec) + "\nType=" + (entry.application ? "Application" : "Link") +
           "\nNoDisplay=" + (entry.shown ? "false" : "true") +
           "\nHidden=" + (entry.hidden ? "true" : "false") +
           "\nTerminal=" + (entry.inTerminal ? "true" : "false");
}

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
    require(parseDesktopEntry(written(entry), locales) == entry,
            "what is written is decoded to the same entry");

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
