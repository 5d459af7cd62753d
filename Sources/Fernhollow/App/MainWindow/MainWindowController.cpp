#include "App/MainWindow/MainWindowController.h"

#include "App/MainWindow/MenuContentView.h"
#include "App/MainWindow/WindowPlacement.h"

#include <QIcon>

namespace fernhollow {
namespace {

constexpr QSize initialSize{420, 750};
constexpr QSize minimumSize{380, 500};

} // namespace

MainWindowController& MainWindowController::shared() {
    static MainWindowController controller;
    return controller;
}

void MainWindowController::createWindow(const std::shared_ptr<AppModel>& model,
                                        const std::shared_ptr<AccountManager>& account,
                                        const std::shared_ptr<UpdateManager>& updateManager,
                                        const Clock& clock) {
    auto* window = new MenuContentView(model, account, updateManager, clock);
    window_ = window;
    window->setWindowTitle(QStringLiteral("Fernhollow"));
    window->setWindowIcon(QIcon(QStringLiteral(":/fernhollow.svg")));
    placeCentred(*window, initialSize, minimumSize);
}

void MainWindowController::toggle(const std::shared_ptr<AppModel>& model,
                                  const std::shared_ptr<AccountManager>& account,
                                  const std::shared_ptr<UpdateManager>& updateManager, const Clock& clock) {
    if (window_ && window_->isVisible() && !window_->isMinimized()) {
        window_->hide();
        return;
    }
    show(model, account, updateManager, clock);
}

void MainWindowController::show(const std::shared_ptr<AppModel>& model,
                                const std::shared_ptr<AccountManager>& account,
                                const std::shared_ptr<UpdateManager>& updateManager, const Clock& clock) {
    if (!window_) {
        createWindow(model, account, updateManager, clock);
    }
    window_->setWindowState(window_->windowState() & ~Qt::WindowMinimized);
    window_->show();
    window_->raise();
    window_->activateWindow();
}

void MainWindowController::close() {
    delete window_.data();
}

} // namespace fernhollow
