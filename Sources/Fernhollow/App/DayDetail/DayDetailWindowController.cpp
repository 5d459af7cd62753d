#include "App/DayDetail/DayDetailWindowController.h"

#include "App/DayDetail/DayDetailView.h"
#include "Presentation/DayText.h"

#include <QShortcut>
#include <QVBoxLayout>

namespace fernhollow {

DayDetailWindowController& DayDetailWindowController::shared() {
    static DayDetailWindowController controller;
    return controller;
}

void DayDetailWindowController::createWindow() {
    setWindow(new QWidget, {.title = QStringLiteral("Day Details"),
                            .key = "dayWindowFrame",
                            .initial = {700, 550},
                            .minimum = {600, 450}});
    auto* layout = new QVBoxLayout(window_);
    layout->setContentsMargins(0, 0, 0, 0);
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
    bringToFront(*window_);
}

} // namespace fernhollow
