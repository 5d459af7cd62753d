// What windows say of themselves: whatever the properties hold, and whatever process the window claims, the
// application has a short plain identifier and name, the same each time.
//
// The input's parts are separated by bytes 0xff: five properties in the order of their atoms with the digit
// of their format in front, and the command line of the process, its words ended by NULs.

#include "Platform/X11/WindowProperties.h"

#include "Fuzz.h"
#include "Platform/Applications/DesktopEntries.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace fernhollow::fuzz {
namespace {

std::string_view takePart(std::string_view& input) {
    const std::string_view part = input.substr(0, input.find('\xff'));
    input.remove_prefix(std::min(part.size() + 1, input.size()));
    return part;
}

/// A property of 8 ("1"), 16 ("2") or 32 bits ("4"), as the server sends it; null for a window that is gone.
WindowProperty property(std::string_view part) {
    const int bytes = part.empty() ? 0 : part.front() - '0';
    if (bytes != 1 && bytes != 2 && bytes != 4) {
        return nullptr;
    }
    part.remove_prefix(1);
    const std::size_t count = part.size() / static_cast<std::size_t>(bytes);
    const std::size_t size = count * static_cast<std::size_t>(bytes);
    auto* reply =
        static_cast<xcb_get_property_reply_t*>(std::calloc(1, sizeof(xcb_get_property_reply_t) + size));
    reply->format = static_cast<std::uint8_t>(8 * bytes);
    reply->value_len = static_cast<std::uint32_t>(count);
    std::memcpy(reply + 1, part.data(), size);
    return WindowProperty(reply);
}

WindowFacts facts(std::string_view& input) {
    WindowAtoms::Properties properties;
    for (std::size_t index = WindowAtoms::gtkApplicationId; index < WindowAtoms::count; ++index) {
        properties[index] = property(takePart(input));
    }
    return windowFacts(properties);
}

std::optional<Process> process(std::string_view line) {
    Process process;
    while (!line.empty()) {
        const std::string_view word = line.substr(0, line.find('\0'));
        line.remove_prefix(std::min(word.size() + 1, line.size()));
        process.arguments.emplace_back(word);
    }
    return process.arguments.empty() ? std::nullopt : std::optional(process);
}

void requirePlain(const std::string& text) {
    require(isUtf8(text) && !text.empty() && text.size() <= 255, "texts are short and UTF-8");
    require(std::ranges::none_of(text, [](char sign) { return sign >= 0 && sign < ' '; }),
            "texts have no control characters");
}

} // namespace

void check(std::string_view input) {
    static DesktopEntries entries({FERNHOLLOW_ENTRIES}, "pt_BR.UTF-8");
    std::string_view rest = input;
    const WindowFacts window = facts(rest);
    require(window.process >= 0, "a process has a number");
    const auto lookup = [rest](pid_t) { return process(rest); };
    const auto application = resolveApplication(window, entries, lookup);
    if (application) {
        requirePlain(application->bundleIdentifier.value_or(""));
        requirePlain(application->localizedName.value_or("none"));
    }
    require(resolveApplication(window, entries, lookup) == application, "the answer is the same each time");
    require(facts(input) == window, "the window is the same each time");
}

} // namespace fernhollow::fuzz
