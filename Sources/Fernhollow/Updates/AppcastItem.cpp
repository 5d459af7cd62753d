#include "Updates/AppcastItem.h"

namespace fernhollow {
namespace {

// The length keeps a text from looking like the end of one field and the beginning of the next.
void append(std::string& signedText, const std::string& text) {
    signedText += std::to_string(text.size());
    signedText += ':';
    signedText += text;
    signedText += '\n';
}

} // namespace

std::string signedText(const AppcastItem& item) {
    std::string result;
    for (const std::string& text : {item.version, item.displayVersion, item.title, item.releaseNotes,
                                    item.link, item.channel, item.operatingSystem, item.packageType,
                                    item.minimumSystemVersion, item.url, std::to_string(item.length)}) {
        append(result, text);
    }
    return result;
}

} // namespace fernhollow
