#include "Presentation/CountsTrouble.h"

#include "Model/AppModel.h"

namespace fernhollow {

// Unsaved counts come first: they could be lost, while saved ones only wait to be sent.
QString countsTrouble(const AppModel& model) {
    if (!model.areCountsSaved.get()) {
        return QStringLiteral("Your counts are not being saved. Fernhollow keeps trying.");
    }
    if (!model.areCountsSent.get()) {
        return QStringLiteral("Your counts are saved, but have not been sent for ten minutes.");
    }
    return {};
}

} // namespace fernhollow
