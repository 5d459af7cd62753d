#pragma once

#include <filesystem>
#include <functional>
#include <string_view>
#include <sys/types.h>

namespace fernhollow {

/// Returns true when `bytes` are genuine.
using ByteCheck = std::function<bool(std::string_view bytes)>;

/// Replaces `target` by a copy of the regular file `source`, with `mode`, once the copy on the disk has
/// passed `isGenuine`.
///
/// Atomic: `target` is the old file or the whole new one, even after a power cut. The next call removes
/// what an interrupted one left in the folder. Blocks. Throws UpdateError (install); `target` is then
/// untouched.
void placeVerifiedCopy(const std::filesystem::path& source, const std::filesystem::path& target, mode_t mode,
                       const ByteCheck& isGenuine);

} // namespace fernhollow
