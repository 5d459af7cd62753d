#pragma once

#include <string>
#include <string_view>

namespace fernhollow {

/// What a program said of itself, fit to be stored and shown: valid UTF-8 up to the first NUL, without
/// control characters and blanks around it, at most 255 bytes. What is not UTF-8 is read as Latin-1,
/// the encoding of plain X11 strings.
std::string plainIdentifier(std::string_view bytes);

} // namespace fernhollow
