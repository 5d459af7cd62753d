#pragma once

#include "Platform/Applications/DesktopEntryScan.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace fernhollow {

/// An installed application. The texts live until the entries are refreshed.
struct DesktopEntry {
    std::string_view id; ///< the desktop-file id without ".desktop"
    std::string_view name;
    bool operator==(const DesktopEntry&) const = default;
};

/// The installed applications, as the desktop entries in a list of folders describe them.
///
/// Of two entries with the same id, the one in the earlier folder hides the other, even when it is
/// marked as deleted. Where several entries fit, an entry that menus show wins over one that they do
/// not. Nothing is read before the first refresh. The texts are kept in one block, because this stays
/// in memory for the life of the program. Owned by the workspace that asks; one thread at a time.
class DesktopEntries {
public:
    /// `locale` chooses the language of the names, for example "pt_BR.UTF-8".
    DesktopEntries(std::vector<std::filesystem::path> folders, std::string_view locale);

    /// Reads the folders the first time, and when something was installed or removed since.
    void refresh();

    std::optional<DesktopEntry> withId(std::string_view id) const;
    /// Blanks in `id` count as hyphens, because ids have hyphens in their place.
    std::optional<DesktopEntry> withIdIgnoringCase(std::string_view id) const;
    /// The only entry whose id ends in `component` ("mousepad" for "org.xfce.mousepad"), ignoring case.
    std::optional<DesktopEntry> withLastComponent(std::string_view component) const;
    std::optional<DesktopEntry> withWindowClass(std::string_view windowClass) const;
    /// The entry that starts `program`, compared by its path, else by its name. An entry that starts
    /// it without arguments wins; if several entries fit and all add arguments, none is returned.
    std::optional<DesktopEntry> withProgram(std::string_view program) const;

private:
    struct Text {
        std::uint32_t begin = 0;
        std::uint32_t length = 0;
    };
    struct Record {
        Text id;
        Text name;
        Text windowClass;
        Text program; ///< empty for programs that run in a terminal
        bool shown = true;
        bool hasArguments = false;
    };
    std::string_view text(Text text) const;
    Text keep(std::string_view text);
    DesktopEntry entry(const Record& record) const;
    void add(const DesktopEntryScan::File& file);
    template<typename Predicate>
    std::optional<DesktopEntry> first(Predicate predicate) const;
    template<typename Predicate>
    std::optional<DesktopEntry> only(Predicate predicate) const;

    std::vector<std::filesystem::path> folders_;
    std::vector<std::string> locales_;
    std::string texts_;
    std::vector<Record> records_; ///< by folder, then by id
    std::vector<WatchedFolder> watched_;
};

} // namespace fernhollow
