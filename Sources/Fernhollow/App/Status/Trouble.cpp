#include "App/Status/Trouble.h"

#include "App/Shell/CountingState.h"
#include "Model/AppModel.h"
#include "Presentation/CountsTrouble.h"

namespace fernhollow {
namespace {

Trouble refused(const CountingState& counting) {
    const auto& problem = counting.problem();
    if (!problem) {
        return {.sentence =
                    QStringLiteral("Key presses are not being counted: this desktop does not let Fernhollow "
                                   "see them. Fernhollow keeps trying."),
                .isHalted = true};
    }
    Trouble trouble{.sentence = QString::fromStdString("Key presses are not being counted. " +
                                                       problem->missing + ' ' + problem->remedy),
                    .isHalted = true};
    if (problem->action) {
        trouble.button = QString::fromStdString(problem->action->label);
        trouble.perform = problem->action->perform;
    }
    return trouble;
}

} // namespace

Trouble Trouble::now(const std::shared_ptr<AppModel>& model, const CountingState& counting) {
    if (model->isPaused.get()) {
        return {.sentence = QStringLiteral("Counting is paused until you resume it."),
                .button = QStringLiteral("Resume"),
                .perform = [model] { model->isPaused.set(false); },
                .isHalted = true};
    }
    if (counting.isRefused.get()) {
        return refused(counting);
    }
    return {.sentence = countsTrouble(*model)};
}

} // namespace fernhollow
