#include "Platform/HostName.h"

#include "Support/Text.h"

#include <QFile>
#include <QSysInfo>

#include <string_view>

namespace fernhollow {
namespace {

// The value of a shell-like assignment, without the quotes around it and the backslashes in it.
std::string unquoted(std::string_view value) {
    std::string result;
    char quote = 0;
    for (std::size_t i = 0; i < value.size(); ++i) {
        const char c = value[i];
        if (quote == 0 && (c == '"' || c == '\'')) {
            quote = c;
        } else if (c == quote) {
            quote = 0;
        } else if (c == '\\' && quote != '\'' && i + 1 < value.size()) {
            result += value[++i];
        } else {
            result += c;
        }
    }
    return result;
}

std::string prettyHostName() {
    QFile file(QStringLiteral("/etc/machine-info"));
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    constexpr std::string_view key = "PRETTY_HOSTNAME=";
    constexpr qint64 longestFile = 64 << 10;
    for (const QByteArray& line : file.read(longestFile).split('\n')) {
        const std::string text = trimmed(line.toStdString());
        if (text.starts_with(key)) {
            return trimmed(unquoted(std::string_view(text).substr(key.size())));
        }
    }
    return {};
}

} // namespace

std::string hostDisplayName() {
    const std::string pretty = prettyHostName();
    return pretty.empty() ? QSysInfo::machineHostName().toStdString() : pretty;
}

} // namespace fernhollow
