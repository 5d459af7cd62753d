#pragma once

#include <string>
#include <string_view>

namespace fernhollow::backend {

/// The SQL that `text` makes of each item, with separators between.
template<typename Items, typename Text>
std::string joined(const Items& items, std::string_view separator, Text text) {
    std::string all;
    bool isFirst = true;
    for (const auto& item : items) {
        all += isFirst ? std::string_view() : separator;
        all += text(item);
        isFirst = false;
    }
    return all;
}

} // namespace fernhollow::backend
