#include "Platform/Applications/DesktopEntryFile.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace fernhollow {
namespace {

constexpr std::string_view mainGroup = "[Desktop Entry]";

std::string_view stripped(std::string_view text) {
    constexpr std::string_view blanks = " \t\r";
    const auto first = text.find_first_not_of(blanks);
    return first == std::string_view::npos ? ""
                                           : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string unescaped(std::string_view value) {
    std::string text;
    text.reserve(value.size());
    for (std::size_t index = 0; index < value.size(); ++index) {
        if (value[index] != '\\' || index + 1 == value.size()) {
            text.push_back(value[index]);
            continue;
        }
        switch (const char escaped = value[++index]) {
        case 's':
            text.push_back(' ');
            break;
        case 'n':
            text.push_back('\n');
            break;
        case 't':
            text.push_back('\t');
            break;
        case 'r':
            text.push_back('\r');
            break;
        case '\\':
            text.push_back('\\');
            break;
        default:
            text.push_back('\\');
            text.push_back(escaped);
        }
    }
    return text;
}

/// Collects the lines of the main group.
class Reader {
public:
    explicit Reader(std::span<const std::string> locales)
        : locales_(locales), nameRank_(locales.size() + 1) {}

    void take(std::string_view key, std::string_view value) {
        if (key.starts_with("Name")) {
            takeName(key.substr(4), value);
        } else if (key == "StartupWMClass") {
            entry_.windowClass = unescaped(value);
        } else if (key == "Exec") {
            entry_.exec = unescaped(value);
        } else if (key == "Type") {
            entry_.application = value == "Application";
        } else if (key == "NoDisplay") {
            entry_.shown = value != "true";
        } else if (key == "Hidden") {
            entry_.hidden = value == "true";
        } else if (key == "Terminal") {
            entry_.inTerminal = value == "true";
        }
    }

    DesktopEntryFile entry() && { return std::move(entry_); }

private:
    // `locale` is empty or in brackets. A name without a locale ranks behind every locale.
    void takeName(std::string_view locale, std::string_view value) {
        std::size_t rank = locales_.size();
        if (!locale.empty()) {
            if (locale.size() < 2 || locale.front() != '[' || locale.back() != ']') {
                return;
            }
            const auto wanted = std::ranges::find(locales_, locale.substr(1, locale.size() - 2));
            if (wanted == locales_.end()) {
                return;
            }
            rank = static_cast<std::size_t>(std::distance(locales_.begin(), wanted));
        }
        if (rank < nameRank_ && !value.empty()) {
            nameRank_ = rank;
            entry_.name = unescaped(value);
        }
    }

    std::span<const std::string> locales_;
    std::size_t nameRank_; ///< of the name found so far
    DesktopEntryFile entry_;
};

} // namespace

DesktopEntryFile parseDesktopEntry(std::string_view text, std::span<const std::string> locales) {
    Reader reader(locales);
    bool inMainGroup = false;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = stripped(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.starts_with('[')) {
            if (inMainGroup) {
                break;
            }
            inMainGroup = line == mainGroup;
        } else if (const auto equals = line.find('='); inMainGroup && equals != std::string_view::npos) {
            reader.take(stripped(line.substr(0, equals)), stripped(line.substr(equals + 1)));
        }
    }
    return std::move(reader).entry();
}

} // namespace fernhollow
