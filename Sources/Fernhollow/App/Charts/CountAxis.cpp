#include "App/Charts/CountAxis.h"

#include <array>
#include <cmath>

namespace fernhollow {
namespace {

constexpr int ticks = 3;

} // namespace

double roundTop(double highest) {
    if (highest <= 1) {
        return 1;
    }
    const double magnitude = std::pow(10, std::floor(std::log10(highest)));
    for (const double factor : std::array{1.0, 1.2, 1.5, 2.0, 2.5, 3.0, 4.0, 5.0, 6.0, 8.0}) {
        if (highest <= factor * magnitude) {
            return factor * magnitude;
        }
    }
    return 10 * magnitude;
}

double closeTop(double highest) {
    constexpr double step = 1.04;
    return highest <= 1 ? 1 : std::pow(step, std::ceil(std::log(highest) / std::log(step)));
}

CountTicker::CountTicker() {
    setTickCount(ticks);
}

double CountTicker::getTickStep(const QCPRange& range) {
    return std::ceil(QCPAxisTicker::getTickStep(range)); // there is no half press
}

QString CountTicker::getTickLabel(double tick, const QLocale&, QChar, int) {
    return QString::fromStdString(numberText_(std::llround(tick)));
}

QString CountTicker::widestLabel(double top) {
    QString widest = QString::fromStdString(numberText_(std::llround(top)));
    for (QChar& digit : widest) {
        digit = digit.isDigit() ? QLatin1Char('8') : digit;
    }
    return widest;
}

} // namespace fernhollow
