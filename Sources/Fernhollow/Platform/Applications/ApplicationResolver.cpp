#include "Platform/Applications/ApplicationResolver.h"

#include "Platform/Applications/CommandLine.h"
#include "Platform/Applications/DesktopEntries.h"
#include "Platform/Applications/Identifier.h"
#include "Support/ApplicationIdentity.h"

#include <array>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace fernhollow {
namespace {

using Found = std::optional<DesktopEntry>;

// The KDE property may hold an id or the path of the file.
std::string_view desktopFileId(std::string_view value) {
    constexpr std::string_view suffix = ".desktop";
    value = baseName(value);
    return value.ends_with(suffix) ? value.substr(0, value.size() - suffix.size()) : value;
}

Found findByClass(const WindowFacts& window, const DesktopEntries& entries) {
    using Question = Found (DesktopEntries::*)(std::string_view) const;
    constexpr std::array<Question, 4> questions{&DesktopEntries::withWindowClass, &DesktopEntries::withId,
                                                &DesktopEntries::withIdIgnoringCase,
                                                &DesktopEntries::withLastComponent};
    for (const Question question : questions) {
        for (const std::string& word : {window.windowClass, window.instance}) {
            if (const Found found = word.empty() ? Found() : (entries.*question)(word)) {
                return found;
            }
        }
    }
    return std::nullopt;
}

// The programs that a desktop entry may have started as this process, the most specific first. An
// interpreter's name says nothing about the script that it runs.
std::vector<std::string> programsOf(const Process& process) {
    const std::string started = process.arguments.empty() ? std::string() : process.arguments.front();
    if (isInterpreter(process.executable.empty() ? started : process.executable)) {
        // The process may have the script's own name, as programs with a "#!" line do.
        return {isInterpreter(started) ? programOf(process.arguments).program : started};
    }
    return {process.executable, started};
}

Found findByProcess(const std::optional<Process>& process, const DesktopEntries& entries) {
    if (process) {
        for (const std::string& program : programsOf(*process)) {
            if (const Found found = entries.withProgram(program)) {
                return found;
            }
        }
    }
    return std::nullopt;
}

std::optional<FrontmostApplication> named(std::string_view id, std::string_view name) {
    std::string identifier = plainIdentifier(id);
    if (identifier.empty()) {
        return std::nullopt;
    }
    std::string shownName = plainIdentifier(name);
    return FrontmostApplication{std::move(identifier),
                                shownName.empty() ? std::nullopt : std::optional(std::move(shownName))};
}

// For a window without a desktop entry: its own texts, else the name of its program.
std::optional<FrontmostApplication> unlisted(const WindowFacts& window,
                                             const std::optional<Process>& process) {
    std::vector<std::string> words{window.windowClass, window.instance, window.gtkApplicationId,
                                   std::string(desktopFileId(window.kdeDesktopFile))};
    if (process) {
        for (const std::string& program : programsOf(*process)) {
            words.emplace_back(baseName(program));
        }
    }
    for (const std::string& word : words) {
        if (auto application = named(word, word)) {
            return application;
        }
    }
    return std::nullopt;
}

} // namespace

std::optional<FrontmostApplication> resolveApplication(const WindowFacts& window, DesktopEntries& entries,
                                                       const ProcessLookup& lookup) {
    if (window.process == ::getpid()) {
        return FrontmostApplication{std::string(applicationIdentifier), std::string(applicationName)};
    }
    if (window == WindowFacts{}) {
        return std::nullopt;
    }
    entries.refresh();
    Found found = entries.withId(window.gtkApplicationId);
    if (!found) {
        found = entries.withId(desktopFileId(window.kdeDesktopFile));
    }
    if (!found) {
        found = findByClass(window, entries);
    }
    std::optional<Process> process;
    if (!found && window.process > 0) {
        process = lookup(window.process);
        found = findByProcess(process, entries);
    }
    return found ? named(found->id, found->name) : unlisted(window, process);
}

} // namespace fernhollow
