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
/// Of two entries with the same id the one in the earlier folder counts, and hides the other even when
/// it is marked as deleted. Where several entries answer a question, one that menus show wins over one
/// that they don't. Nothing is read before the first refresh; the texts are kept in one block, for this
/// stays in memory for the life of the program. One thread at a time, owned by who asks.
class DesktopEntries {
public:
    /// `locale` is that of the names, for example "pt_BR.UTF-8".
    DesktopEntries(std::vector<std::filesystem::path> folders, std::string_view locale);

    /// Reads the folders when that was not done yet or something was installed or removed since.
    void refresh();

    std::optional<DesktopEntry> withId(std::string_view id) const;
    /// Blanks count as hyphens, which is what ids have in their place.
    std::optional<DesktopEntry> withIdIgnoringCase(std::string_view id) const;
    /// The only entry whose id ends in `component` ("mousepad" for "org.xfce.mousepad"), ignoring case.
    std::optional<DesktopEntry> withLastComponent(std::string_view component) const;
    std::optional<DesktopEntry> withWindowClass(std::string_view windowClass) const;
    /// The entry that starts `program`: by its path if one does, else by its name. One that starts it
    /// without arguments wins; several that all add arguments say nothing.
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
        Text program; ///< empty for programs without a window
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
