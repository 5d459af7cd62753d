#pragma once

#include "Updates/AppcastItem.h"

namespace fernhollow::tests {

/// A release as a feed would tell of it, unsigned. What is compared is finer than what people read.
inline AppcastItem release(const std::string& displayVersion) {
    AppcastItem item;
    item.version = displayVersion + ".7";
    item.displayVersion = displayVersion;
    item.releaseNotes = "What is new in " + displayVersion;
    item.length = 12'000'000;
    return item;
}

} // namespace fernhollow::tests
