#include "Model/Sync/LoggedText.h"

#include <unicode/utf8.h>

#include <cstdint>
#include <limits>

namespace fernhollow {

std::optional<std::string> loggedText(std::string_view body, std::size_t characters) {
    if (body.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
        return std::nullopt;
    }
    const auto length = static_cast<std::int32_t>(body.size());
    std::int32_t end = 0;
    std::size_t seen = 0;
    for (std::int32_t position = 0; position < length; ++seen) {
        if (seen == characters) {
            end = position;
        }
        UChar32 character = 0;
        // NOLINTNEXTLINE(bugprone-inc-dec-in-conditions): so the macro is
        U8_NEXT(body.data(), position, length, character);
        if (character < 0) {
            return std::nullopt;
        }
    }
    return std::string(body.substr(0, seen > characters ? static_cast<std::size_t>(end) : body.size()));
}

} // namespace fernhollow
