#include "Platform/StatusItem/CompactCount.h"

#include <QList>

namespace fernhollow {
namespace {

// A locale writes decimals with the mark that it does not group with, and those that group with a
// blank or leave four digits ungrouped write a comma.
QChar decimalMark(const QString& number) {
    constexpr char16_t arabicThousands = u'\u066C';
    constexpr char16_t arabicDecimal = u'\u066B';
    for (const QChar mark : number) {
        switch (mark.unicode()) {
        case u',':
        case u'\'':
        case u'\u2019':
            return u'.';
        case arabicThousands:
            return arabicDecimal;
        default:
            break;
        }
    }
    return u',';
}

// Code points, because some scripts keep their digits beyond the first 65,536.
QList<uint> digitsOf(const QString& number) {
    QList<uint> digits;
    for (const uint character : number.toUcs4()) {
        if (QChar::category(character) == QChar::Number_DecimalDigit) {
            digits.append(character);
        }
    }
    return digits;
}

QString text(const QList<uint>& characters, qsizetype from, qsizetype count) {
    QString result;
    for (const uint character : characters.sliced(from, count)) {
        result.append(QStringView(QChar::fromUcs4(character)));
    }
    return result;
}

} // namespace

QString compactCount(const QString& number) {
    constexpr QStringView units = u"kMGTPE";
    const auto digits = digitsOf(number);
    if (digits.isEmpty()) {
        const auto characters = number.trimmed().toUcs4();
        return text(characters, 0, qMin<qsizetype>(characters.size(), 4));
    }
    const bool negative = number.contains(u'-') || number.contains(u'\u2212');
    const QString sign = negative ? QStringLiteral("\u2212") : QString();
    const auto thousands = qMin((digits.size() - 1) / 3, units.size());
    const auto leading = digits.size() - 3 * thousands;
    QString result = sign + text(digits, 0, leading);
    if (thousands == 0) {
        return result;
    }
    if (leading == 1) {
        result += decimalMark(number) + text(digits, 1, 1);
    }
    return result + units[thousands - 1];
}

QString countToolTip(const QString& number) {
    const auto digits = digitsOf(number);
    const bool isOne = digits.size() == 1 && QChar::digitValue(digits.first()) == 1;
    return QStringLiteral("Fernhollow: %1 key %2 today")
        .arg(number, isOne ? QStringLiteral("press") : QStringLiteral("presses"));
}

} // namespace fernhollow
