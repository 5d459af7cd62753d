#include "AppcastWriter.h"

#include <QByteArray>
#include <QSaveFile>
#include <QString>
#include <QXmlStreamWriter>

#include <stdexcept>

namespace fernhollow {
namespace {

const QString ours = QStringLiteral("https://fernhollow.app/xml/appcast");

QString text(const std::string& utf8) {
    return QString::fromStdString(utf8);
}

void writeElement(QXmlStreamWriter& xml, const char* name, const std::string& value) {
    if (!value.empty()) {
        xml.writeTextElement(QString::fromLatin1(name), text(value));
    }
}

void writeOurElement(QXmlStreamWriter& xml, const char* name, const std::string& value) {
    if (!value.empty()) {
        xml.writeTextElement(ours, QString::fromLatin1(name), text(value));
    }
}

void writeOurAttribute(QXmlStreamWriter& xml, const char* name, const std::string& value) {
    if (!value.empty()) {
        xml.writeAttribute(ours, QString::fromLatin1(name), text(value));
    }
}

void writeItem(QXmlStreamWriter& xml, const AppcastItem& item) {
    xml.writeStartElement(QStringLiteral("item"));
    writeElement(xml, "title", item.title);
    writeElement(xml, "link", item.link);
    writeElement(xml, "description", item.releaseNotes);
    writeOurElement(xml, "channel", item.channel);
    writeOurElement(xml, "minimumSystemVersion", item.minimumSystemVersion);
    xml.writeStartElement(QStringLiteral("enclosure"));
    xml.writeAttribute(QStringLiteral("url"), text(item.url));
    xml.writeAttribute(QStringLiteral("length"), QString::number(item.length));
    xml.writeAttribute(QStringLiteral("type"), QStringLiteral("application/octet-stream"));
    writeOurAttribute(xml, "version", item.version);
    writeOurAttribute(xml, "shortVersionString", item.displayVersion);
    writeOurAttribute(xml, "os", item.operatingSystem);
    writeOurAttribute(xml, "packageType", item.packageType);
    writeOurAttribute(xml, "edSignature", item.edSignature);
    writeOurAttribute(xml, "itemSignature", item.itemSignature);
    xml.writeEndElement();
    xml.writeEndElement();
}

} // namespace

std::string writeAppcast(const std::vector<AppcastItem>& items) {
    QByteArray bytes;
    QXmlStreamWriter xml(&bytes);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    xml.writeStartElement(QStringLiteral("rss"));
    xml.writeAttribute(QStringLiteral("version"), QStringLiteral("2.0"));
    xml.writeNamespace(ours, QStringLiteral("fernhollow"));
    xml.writeStartElement(QStringLiteral("channel"));
    xml.writeTextElement(QStringLiteral("title"), QStringLiteral("Fernhollow"));
    for (const AppcastItem& item : items) {
        writeItem(xml, item);
    }
    xml.writeEndDocument();
    return bytes.toStdString();
}

std::vector<AppcastItem> withRelease(std::vector<AppcastItem> items, const AppcastItem& item) {
    std::erase_if(items, [&](const AppcastItem& other) {
        return other.version == item.version && other.channel == item.channel &&
               other.operatingSystem == item.operatingSystem && other.packageType == item.packageType;
    });
    items.insert(items.begin(), item);
    return items;
}

void replaceContents(const std::filesystem::path& file, const std::string& contents) {
    QSaveFile target(QString::fromStdString(file.native()));
    if (!target.open(QIODevice::WriteOnly) ||
        target.write(contents.data(), static_cast<qint64>(contents.size())) < 0 || !target.commit()) {
        throw std::runtime_error(file.native() + ": " + target.errorString().toStdString());
    }
}

} // namespace fernhollow
