#include "App/DayDetail/DayDetailWindowController.h"

#include "App/DayDetail/DayDetailView.h"
#include "App/MainWindow/WindowPlacement.h"
#include "Presentation/DayText.h"

#include <QIcon>
#include <QShortcut>
#include <QVBoxLayout>

namespace fernhollow {
namespace {

constexpr QSize initialSize{700, 550};
constexpr QSize minimumSize{600, 450};

} // namespace

DayDetailWindowController& DayDetailWindowController::shared() {
    static DayDetailWindowController controller;
    return controller;
}

void DayDetailWindowController::createWindow() {
    window_ = new QWidget;
    window_->setWindowTitle(QStringLiteral("Day Details"));
    window_->setWindowIcon(QIcon(QStringLiteral(":/fernhollow.svg")));
    auto* layout = new QVBoxLayout(window_);
    layout->setContentsMargins(0, 0, 0, 0);
    placeCentred(*window_, initialSize, minimumSize);
    for (const QKeySequence& key : {QKeySequence(Qt::CTRL | Qt::Key_W), QKeySequence(Qt::Key_Escape)}) {
        QObject::connect(new QShortcut(key, window_), &QShortcut::activated, window_, &QWidget::close);
    }
}

void DayDetailWindowController::showWindow(Instant date, const std::shared_ptr<AppModel>& model,
                                           const Clock& clock) {
    if (!window_) {
        createWindow();
    }
    delete view_.data();
    view_ = new DayDetailView(date, model, clock);
    window_->layout()->addWidget(view_);
    view_->show();
    view_->setFocus();
    window_->setWindowTitle(QStringLiteral("Day Details - ") +
                            QString::fromStdString(DayText().mediumDate(date)));
    window_->setWindowState(window_->windowState() & ~Qt::WindowMinimized);
    window_->show();
    window_->raise();
    window_->activateWindow();
}

void DayDetailWindowController::close() {
    delete window_.data();
}

} // namespace fernhollow
