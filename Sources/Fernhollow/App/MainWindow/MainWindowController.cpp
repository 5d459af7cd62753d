#include "App/MainWindow/MainWindowController.h"

#include "App/MainWindow/MenuContentView.h"
#include "App/Shell/AppStateHolder.h"

namespace fernhollow {

MainWindowController& MainWindowController::shared() {
    static MainWindowController controller;
    return controller;
}

void MainWindowController::createWindow(const AppStateHolder& objects) {
    setWindow(new MenuContentView(objects.model, objects.account, objects.updateManager, objects.counting,
                                  *objects.clock),
              {.title = QStringLiteral("Fernhollow"),
               .key = "mainWindowFrame",
               .initial = {420, 750},
               .minimum = {380, 500}});
}

void MainWindowController::toggle(const AppStateHolder& objects, const ActivationToken& token) {
    if (isVisible()) {
        window_->hide();
        return;
    }
    show(objects, token);
}

void MainWindowController::show(const AppStateHolder& objects, const ActivationToken& token) {
    if (!window_) {
        createWindow(objects);
    }
    bringToFront(*window_, token);
}

} // namespace fernhollow
