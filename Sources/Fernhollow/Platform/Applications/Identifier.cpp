#include "Platform/Applications/Identifier.h"

#include <QString>
#include <QStringDecoder>

#include <algorithm>
#include <cstddef>

namespace fernhollow {
namespace {

constexpr std::size_t longest = 255;

std::string_view cut(std::string_view utf8) {
    if (utf8.size() <= longest) {
        return utf8;
    }
    std::size_t end = longest;
    while (end > 0 && (static_cast<unsigned char>(utf8[end]) & 0xc0) == 0x80) {
        --end;
    }
    return utf8.substr(0, end);
}

bool isPlainAscii(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return c >= ' ' && c < '\x7f'; });
}

std::string_view withoutBlanks(std::string_view text) {
    const auto first = text.find_first_not_of(' ');
    return first == std::string_view::npos ? "" : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

} // namespace

std::string plainIdentifier(std::string_view bytes) {
    const std::string_view text = cut(bytes.substr(0, bytes.find('\0')));
    if (isPlainAscii(text)) {
        return std::string(withoutBlanks(text));
    }
    const QByteArrayView view(text.data(), static_cast<qsizetype>(text.size()));
    QStringDecoder decoder(QStringDecoder::Utf8, QStringConverter::Flag::Stateless);
    QString decoded = decoder(view);
    if (decoder.hasError()) {
        decoded = QString::fromLatin1(view);
    }
    decoded.removeIf([](QChar c) { return c.category() == QChar::Other_Control; });
    const std::string utf8 = decoded.trimmed().toStdString();
    return std::string(withoutBlanks(cut(utf8)));
}

} // namespace fernhollow
