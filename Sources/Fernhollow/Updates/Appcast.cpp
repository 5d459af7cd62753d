#include "Updates/Appcast.h"

#include "Updates/UpdateError.h"

#include <QXmlStreamReader>

#include <charconv>
#include <cstdint>
#include <utility>

namespace fernhollow {
namespace {

using namespace Qt::StringLiterals;

constexpr auto ownNamespace = "https://fernhollow.app/xml/appcast"_L1;
constexpr std::size_t maximumItems = 1000;

std::string trimmed(const QString& text) {
    return text.trimmed().toStdString();
}

// Text that is not a number becomes a length that is refused later.
std::uint64_t parseLength(const std::string& text) {
    std::uint64_t length = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), length);
    return error == std::errc() && end == text.data() + text.size() ? length : 0;
}

class Parser {
public:
    explicit Parser(std::string_view xml)
        : xml_(QByteArray(xml.data(), static_cast<qsizetype>(xml.size()))) {}

    std::vector<AppcastItem> parse() {
        std::vector<AppcastItem> items;
        while (!xml_.atEnd()) {
            xml_.readNext();
            // A feed needs no declared entities, and a few of them can expand to gigabytes.
            if (xml_.isDTD()) {
                throw UpdateError(UpdateError::Reason::feed, "The update feed declares entities.");
            }
            if (!isAt("item"_L1)) {
                continue;
            }
            auto item = readItem();
            if (items.size() == maximumItems) {
                throw UpdateError(UpdateError::Reason::feed, "The update feed is too long.");
            }
            if (!item.version.empty() && hasEnclosure_) {
                items.push_back(std::move(item));
            }
        }
        if (xml_.hasError()) {
            throw UpdateError(UpdateError::Reason::feed,
                              "The update feed cannot be read: " + xml_.errorString().toStdString() + ".");
        }
        return items;
    }

private:
    bool isAt(QLatin1StringView name) const {
        return xml_.isStartElement() && xml_.name() == name && xml_.namespaceUri().isEmpty();
    }

    AppcastItem readItem() {
        AppcastItem item;
        hasEnclosure_ = false;
        while (xml_.readNextStartElement()) {
            if (isAt("enclosure"_L1)) {
                readEnclosure(item);
            } else if (std::string* field = fieldOfElement(item)) {
                *field = trimmed(xml_.readElementText(QXmlStreamReader::SkipChildElements));
            } else {
                xml_.skipCurrentElement();
            }
        }
        if (item.displayVersion.empty()) {
            item.displayVersion = item.version;
        }
        return item;
    }

    std::string* fieldOfElement(AppcastItem& item) const {
        const QStringView name = xml_.name();
        if (xml_.namespaceUri().isEmpty()) {
            return name == "title"_L1         ? &item.title
                   : name == "link"_L1        ? &item.link
                   : name == "description"_L1 ? &item.releaseNotes
                                              : nullptr;
        }
        if (xml_.namespaceUri() != ownNamespace) {
            return nullptr;
        }
        return name == "channel"_L1                ? &item.channel
               : name == "minimumSystemVersion"_L1 ? &item.minimumSystemVersion
               : name == "version"_L1              ? &item.version
               : name == "shortVersionString"_L1   ? &item.displayVersion
                                                   : nullptr;
    }

    void readEnclosure(AppcastItem& item) {
        const QXmlStreamAttributes attributes = xml_.attributes();
        const auto own = [&attributes](QLatin1StringView name, std::string& field) {
            if (attributes.hasAttribute(QString(ownNamespace), QString(name))) {
                field = trimmed(attributes.value(QString(ownNamespace), QString(name)).toString());
            }
        };
        hasEnclosure_ = true;
        item.url = trimmed(attributes.value("url"_L1).toString());
        item.length = parseLength(attributes.value("length"_L1).toString().toStdString());
        own("version"_L1, item.version);
        own("shortVersionString"_L1, item.displayVersion);
        own("os"_L1, item.operatingSystem);
        own("packageType"_L1, item.packageType);
        own("edSignature"_L1, item.edSignature);
        own("itemSignature"_L1, item.itemSignature);
        xml_.skipCurrentElement();
    }

    QXmlStreamReader xml_;
    bool hasEnclosure_ = false;
};

} // namespace

std::vector<AppcastItem> parseAppcast(std::string_view xml) {
    return Parser(xml).parse();
}

} // namespace fernhollow
