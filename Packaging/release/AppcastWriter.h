#pragma once

#include "Updates/AppcastItem.h"

#include <filesystem>
#include <string>
#include <vector>

namespace fernhollow {

/// The feed of these releases, in their order: RSS 2.0, as parseAppcast() reads it.
std::string writeAppcast(const std::vector<AppcastItem>& items);

/// `items` with `item` at the top, in place of the item with the same version, channel, system and
/// kind of package.
std::vector<AppcastItem> withRelease(std::vector<AppcastItem> items, const AppcastItem& item);

/// Writes `file` whole or not at all. Throws std::runtime_error.
void replaceContents(const std::filesystem::path& file, const std::string& contents);

} // namespace fernhollow
