#pragma once

#include "Model/AppTracker.h"

#include <QColor>

namespace fernhollow {

/// The application's colour for painting.
inline QColor colorOf(std::string_view bundleId) {
    const AppTracker::Color color = AppTracker::color(bundleId);
    return QColor::fromRgbF(static_cast<float>(color.red), static_cast<float>(color.green),
                            static_cast<float>(color.blue));
}

} // namespace fernhollow
