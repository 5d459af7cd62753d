#include "App/Shell/TrustPrompt.h"

#include "Support/DebugLog.h"

#include <QIcon>
#include <QMessageBox>
#include <QPushButton>

namespace fernhollow {

void showTrustPrompt(const TrustProblem& problem) {
    debugLog("[TrustPrompt] " + problem.missing + " " + problem.remedy);
    auto* message =
        new QMessageBox(QMessageBox::Information, QStringLiteral("Fernhollow"),
                        QStringLiteral("Fernhollow cannot count key presses yet"), QMessageBox::Ok);
    message->setInformativeText(QString::fromStdString(problem.missing + "\n\n" + problem.remedy));
    if (problem.action) {
        const QPushButton* button =
            message->addButton(QString::fromStdString(problem.action->label), QMessageBox::AcceptRole);
        QObject::connect(button, &QPushButton::clicked, message, problem.action->perform);
    }
    message->setAttribute(Qt::WA_DeleteOnClose);
    message->setWindowIcon(QIcon(QStringLiteral(":/fernhollow.svg")));
    message->setModal(false);
    message->show();
}

} // namespace fernhollow
