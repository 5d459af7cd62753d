#pragma once

#include <string>
#include <string_view>

namespace fernhollow {

/// A program's own name for itself, made safe to store and show: valid UTF-8 up to the first NUL,
/// without control characters, without blanks at the ends, at most 255 bytes. Bytes that are not UTF-8
/// are read as Latin-1, the encoding of plain X11 strings.
std::string plainIdentifier(std::string_view bytes);

} // namespace fernhollow
