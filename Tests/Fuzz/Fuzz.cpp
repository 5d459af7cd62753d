#include "Fuzz.h"

#include <QUtf8StringView>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace fernhollow::fuzz {

void require(bool holds, const char* property) {
    if (!holds) {
        std::fprintf(stderr, "Does not hold: %s\n", property);
        std::abort();
    }
}

bool isUtf8(std::string_view text) {
    return QUtf8StringView(text.data(), static_cast<qsizetype>(text.size())).isValidUtf8();
}

} // namespace fernhollow::fuzz

// The names are libFuzzer's.
extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    ::setenv("HOME", "/dev/null", 1); // where no debug log can be made
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fernhollow::fuzz::check({reinterpret_cast<const char*>(data), size});
    return 0;
}
