#include "App/Shell/TrustPrompt.h"
#include "Support/TemporaryHome.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QPointer>
#include <gmock/gmock.h>

namespace fernhollow {
namespace {

TEST(TrustPrompts, OfferWhatThePersonMayDo) {
    const tests::TemporaryHome home;
    int performed = 0;
    const std::vector<std::pair<TrustProblem, qsizetype>> cases{
        {{"Nothing tells.", "Wait.", {}}, 1}, // buttons
        {{"It is off.", "Turn it on.", TrustAction{"Turn On", [&] { ++performed; }}}, 2}};
    for (const auto& [problem, buttons] : cases) {
        showTrustPrompt(problem);
        QPointer<QMessageBox> message =
            qobject_cast<QMessageBox*>(QApplication::topLevelWidgets().constFirst());
        ASSERT_TRUE(message);
        EXPECT_THAT(message->informativeText().toStdString(), testing::HasSubstr(problem.remedy));
        EXPECT_EQ(message->buttons().size(), buttons);
        for (QAbstractButton* button : message->buttons()) {
            if (problem.action && button->text().toStdString() == problem.action->label) {
                button->click();
            }
        }
        delete message;
    }
    EXPECT_EQ(performed, 1);
}

} // namespace
} // namespace fernhollow
