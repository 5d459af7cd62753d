#include "Platform/Applications/DesktopEntries.h"

#include "Platform/Applications/CommandLine.h"
#include "Platform/Applications/DesktopEntryScan.h"
#include "Platform/Applications/MessageLocale.h"

#include <algorithm>

namespace fernhollow {
namespace {

char folded(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c == ' ' ? '-' : c;
}

bool equalFolded(std::string_view left, std::string_view right) {
    return std::ranges::equal(left, right, {}, folded, folded);
}

std::string_view lastComponent(std::string_view id) {
    return id.substr(id.rfind('.') + 1);
}

} // namespace

DesktopEntries::DesktopEntries(std::vector<std::filesystem::path> folders, std::string_view locale)
    : folders_(std::move(folders)), locales_(localeCandidates(locale)) {}

void DesktopEntries::refresh() {
    if (!watched_.empty() && std::ranges::none_of(watched_, &WatchedFolder::hasChanged)) {
        return;
    }
    DesktopEntryScan scan(folders_);
    watched_ = scan.takeWatched();
    texts_.clear();
    records_.clear();
    for (const DesktopEntryScan::File& file : scan.files()) {
        add(file);
    }
    texts_.shrink_to_fit();
    records_.shrink_to_fit();
}

void DesktopEntries::add(const DesktopEntryScan::File& file) {
    const auto parsed = file.read(locales_);
    if (!parsed || !parsed->application || parsed->hidden) {
        return;
    }
    const CommandProgram command = programOf(splitExec(parsed->exec));
    Record record;
    record.id = keep(file.id);
    record.name = keep(parsed->name.empty() ? file.id : parsed->name);
    record.windowClass = keep(parsed->windowClass);
    record.program = keep(parsed->inTerminal ? "" : command.program);
    record.shown = parsed->shown;
    record.hasArguments = command.hasArguments;
    records_.push_back(record);
}

std::optional<DesktopEntry> DesktopEntries::withId(std::string_view id) const {
    return first([&](const Record& record) { return text(record.id) == id; });
}

std::optional<DesktopEntry> DesktopEntries::withIdIgnoringCase(std::string_view id) const {
    return first([&](const Record& record) { return equalFolded(text(record.id), id); });
}

std::optional<DesktopEntry> DesktopEntries::withLastComponent(std::string_view component) const {
    return only([&](const Record& record) { return equalFolded(lastComponent(text(record.id)), component); });
}

std::optional<DesktopEntry> DesktopEntries::withWindowClass(std::string_view windowClass) const {
    return first([&](const Record& record) { return text(record.windowClass) == windowClass; });
}

std::optional<DesktopEntry> DesktopEntries::withProgram(std::string_view program) const {
    if (program.empty()) {
        return std::nullopt;
    }
    const auto starts = [&](const Record& record, bool byPath, bool withArguments) {
        const std::string_view own = text(record.program);
        return record.hasArguments == withArguments &&
               (byPath ? own == program : !own.empty() && baseName(own) == baseName(program));
    };
    for (const bool byPath : {true, false}) {
        if (auto plain = first([&](const Record& record) { return starts(record, byPath, false); })) {
            return plain;
        }
        if (auto single = only([&](const Record& record) { return starts(record, byPath, true); })) {
            return single;
        }
    }
    return std::nullopt;
}

// The first fitting entry that menus show, else the first fitting one.
template<typename Predicate>
std::optional<DesktopEntry> DesktopEntries::first(Predicate predicate) const {
    const Record* found = nullptr;
    for (const Record& record : records_) {
        if ((found == nullptr || record.shown) && predicate(record)) {
            found = &record;
            if (record.shown) {
                break;
            }
        }
    }
    return found != nullptr ? std::optional(entry(*found)) : std::nullopt;
}

// The only fitting entry that menus show; where they show none, the only fitting one.
template<typename Predicate>
std::optional<DesktopEntry> DesktopEntries::only(Predicate predicate) const {
    for (const bool shown : {true, false}) {
        const auto matches = [&](const Record& record) { return record.shown == shown && predicate(record); };
        const auto found = std::ranges::find_if(records_, matches);
        if (found != records_.end()) {
            const bool unique = std::find_if(found + 1, records_.end(), matches) == records_.end();
            return unique ? std::optional(entry(*found)) : std::nullopt;
        }
    }
    return std::nullopt;
}

std::string_view DesktopEntries::text(Text text) const {
    return std::string_view(texts_).substr(text.begin, text.length);
}

DesktopEntries::Text DesktopEntries::keep(std::string_view text) {
    const Text kept{static_cast<std::uint32_t>(texts_.size()), static_cast<std::uint32_t>(text.size())};
    texts_.append(text);
    return kept;
}

DesktopEntry DesktopEntries::entry(const Record& record) const {
    return {text(record.id), text(record.name)};
}

} // namespace fernhollow
