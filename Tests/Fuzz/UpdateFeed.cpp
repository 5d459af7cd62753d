// The update feed: every release that is decoded is UTF-8, versions are ordered alike from both sides, and
// nothing unsigned is ever offered.

#include "Fuzz.h"
#include "Updates/Appcast.h"
#include "Updates/UpdateError.h"

#include <string>

namespace fernhollow::fuzz {
namespace {

constexpr const char* publicKey = "MCowBQYDK2VwAyEAGb9ECWmEzf6FQbrBZ9w7lshQhqo=";

std::vector<AppcastItem> parsed(std::string_view xml) {
    try {
        return parseAppcast(xml);
    } catch (const UpdateError&) {
        return {};
    }
}

bool offersNothing(const std::vector<AppcastItem>& items) {
    const UpdateHost host{.version = "0.1.0",
                          .systemVersion = "6.1.0",
                          .packageType = "appimage",
                          .feedUrl = "https://example.org/appcast.xml",
                          .publicKey = publicKey};
    try {
        return !newestUpdate(items, host);
    } catch (const UpdateError&) {
        return true;
    }
}

} // namespace

void check(std::string_view input) {
    const auto items = parsed(input);
    for (const AppcastItem& item : items) {
        require(!item.version.empty(), "a release has a version");
        require(isUtf8(signedText(item)), "texts are UTF-8");
        const auto order = compareVersions(item.version, items.front().version);
        require((compareVersions(items.front().version, item.version) <=> 0) == (0 <=> order),
                "the order of versions is the same from both sides");
    }
    require(offersNothing(items), "what is not signed is not offered");
}

} // namespace fernhollow::fuzz
