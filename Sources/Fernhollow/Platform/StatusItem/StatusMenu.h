#pragma once

#include <QString>

#include <functional>
#include <vector>

namespace fernhollow {

/// One line of the status item's menu.
struct StatusMenuEntry {
    QString label;
    std::function<void()> perform; ///< what a click does
};

using StatusMenu = std::vector<StatusMenuEntry>;

} // namespace fernhollow
