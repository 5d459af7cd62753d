#include "Platform/Applications/CommandLine.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>

namespace fernhollow {
namespace {

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n';
}

// Takes the word at `position` and moves `position` behind it. Inside double quotes a backslash
// takes the next character as it is. Nothing when a quote is not closed.
std::optional<std::string> takeWord(std::string_view text, std::size_t& position) {
    std::string word;
    bool quoted = false;
    for (; position < text.size() && (quoted || !isBlank(text[position])); ++position) {
        const char c = text[position];
        if (c == '"') {
            quoted = !quoted;
        } else if (c == '\\' && position + 1 < text.size()) {
            word.push_back(text[++position]);
        } else {
            word.push_back(c);
        }
    }
    return quoted ? std::nullopt : std::optional(std::move(word));
}

bool isFieldCode(std::string_view word) {
    return word.size() == 2 && word[0] == '%' && word[1] != '%';
}

// True for "FOO=bar", which may stand before a program.
bool isAssignment(std::string_view word) {
    const auto equals = word.find('=');
    return equals != std::string_view::npos && equals > 0 &&
           word.substr(0, equals).find('/') == std::string_view::npos;
}

} // namespace

std::vector<std::string> splitExec(std::string_view exec) {
    std::vector<std::string> words;
    for (std::size_t position = 0; position < exec.size();) {
        if (isBlank(exec[position])) {
            ++position;
            continue;
        }
        const std::size_t begin = position;
        auto word = takeWord(exec, position);
        if (!word) {
            return {};
        }
        if (!isFieldCode(exec.substr(begin, position - begin))) {
            words.push_back(std::move(*word));
        }
    }
    return words;
}

std::string_view baseName(std::string_view path) {
    return path.substr(path.rfind('/') + 1);
}

bool isInterpreter(std::string_view program) {
    static constexpr std::array<std::string_view, 26> names{
        "bash", "bun",    "dash", "deno",   "electron", "fish",      "gjs",  "gjs-console", "guile",
        "java", "ksh",    "lua",  "luajit", "mono",     "mono-sgen", "node", "nodejs",      "perl",
        "php",  "python", "ruby", "sh",     "tclsh",    "wish",      "zsh",  "ash"};
    // "python3.11" and "ruby3.1" are what "python" and "ruby" mean.
    const std::string_view name = baseName(program);
    const auto end = name.find_last_not_of("0123456789.");
    const std::string_view unversioned = end == std::string_view::npos ? "" : name.substr(0, end + 1);
    return std::ranges::find(names, unversioned) != names.end();
}

CommandProgram programOf(std::span<const std::string> words) {
    if (!words.empty() && baseName(words.front()) == "env") {
        words = words.subspan(1);
        while (!words.empty() && (isAssignment(words.front()) || words.front().starts_with('-'))) {
            words = words.subspan(1);
        }
    }
    if (words.empty()) {
        return {};
    }
    if (!isInterpreter(words.front())) {
        return {words.front(), words.size() > 1};
    }
    words = words.subspan(1);
    while (!words.empty() && words.front().starts_with('-')) {
        if (words.front() == "-c" || words.front() == "-e") {
            return {}; // the argument itself is the script
        }
        words = words.subspan(1);
    }
    return words.empty() ? CommandProgram{} : CommandProgram{words.front(), words.size() > 1};
}

} // namespace fernhollow
