#pragma once

#include <filesystem>
#include <functional>
#include <string_view>
#include <sys/types.h>

namespace fernhollow {

/// Whether these bytes are the wanted ones.
using ByteCheck = std::function<bool(std::string_view bytes)>;

/// Puts a copy of the regular file `source` in the place of `target`, with `mode`, once the copy, as it is on
/// the disk, has passed `isGenuine`.
///
/// Atomic: `target` is the old file or the whole new one, also after a power failure. What an interrupted
/// call left in the folder is removed by the next. Blocks. Throws UpdateError (install); `target` is
/// untouched then.
void placeVerifiedCopy(const std::filesystem::path& source, const std::filesystem::path& target, mode_t mode,
                       const ByteCheck& isGenuine);

} // namespace fernhollow
