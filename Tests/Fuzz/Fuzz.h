#pragma once

#include <string_view>

namespace fernhollow::fuzz {

/// Decodes `input` and checks the decoder's property. Each fuzzer defines it; libFuzzer calls it with ever
/// new bytes, and takes what ends the program for a finding.
void check(std::string_view input);

/// Ends the program, naming `property`, unless it holds.
void require(bool holds, const char* property);

bool isUtf8(std::string_view text);

} // namespace fernhollow::fuzz
