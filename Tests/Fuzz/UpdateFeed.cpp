// The update feed: every release that is decoded is UTF-8 and survives being written and decoded again,
// versions are ordered alike from both sides, and nothing unsigned is ever offered.

#include "Fuzz.h"
#include "Updates/Appcast.h"
#include "Updates/UpdateError.h"

#include <string>
#include <utility>

namespace fernhollow::fuzz {
namespace {

constexpr const char* publicKey = "MCowBQYDK2VwAyEAGb9ECWmEzf6FQbrBZ9w7lshQhqo=";

std::string escaped(const std::string& text) {
    std::string result;
    for (const char sign : text) {
        const bool isSpecial = sign == '<' || sign == '>' || sign == '&' || sign == '"' || sign == '\r' ||
                               sign == '\n' || sign == '\t';
        result += isSpecial ? "&#" + std::to_string(static_cast<int>(sign)) + ";" : std::string(1, sign);
    }
    return result;
}

std::string written(const AppcastItem& item) {
    std::string xml = "<item xmlns:f=\"https://fernhollow.app/xml/appcast\">";
    for (const auto& [name, value] : {std::pair("title", &item.title),
                                      {"link", &item.link},
                                      {"description", &item.releaseNotes},
                                      {"f:channel", &item.channel},
                                      {"f:minimumSystemVersion", &item.minimumSystemVersion}}) {
        xml.append("<").append(name).append(">").append(escaped(*value));
        xml.append("</").append(name).append(">");
    }
    xml += "<enclosure";
    const std::string length = std::to_string(item.length);
    for (const auto& [name, value] : {std::pair("url", &item.url),
                                      {"length", &length},
                                      {"f:version", &item.version},
                                      {"f:shortVersionString", &item.displayVersion},
                                      {"f:os", &item.operatingSystem},
                                      {"f:packageType", &item.packageType},
                                      {"f:edSignature", &item.edSignature},
                                      {"f:itemSignature", &item.itemSignature}}) {
        xml.append(" ").append(name).append("=\"").append(escaped(*value)).append("\"");
    }
    return xml + "/></item>";
}

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
    std::string feed = "<rss><channel>";
    for (const AppcastItem& item : items) {
        require(!item.version.empty(), "a release has a version");
        require(isUtf8(signedText(item)), "texts are UTF-8");
        feed += written(item);
        const auto order = compareVersions(item.version, items.front().version);
        require((compareVersions(items.front().version, item.version) <=> 0) == (0 <=> order),
                "the order of versions is the same from both sides");
    }
    require(parsed(feed + "</channel></rss>") == items, "what is written is decoded to the same releases");
    require(offersNothing(items), "what is not signed is not offered");
}

} // namespace fernhollow::fuzz
