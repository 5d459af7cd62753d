#pragma once

#include <QString>

namespace fernhollow {

class AppModel;

/// One sentence for the person when counts are not being saved, or not being sent; empty when all is well.
QString countsTrouble(const AppModel& model);

} // namespace fernhollow
