#pragma once

#include "App/Widgets/Redraw.h"
#include "Support/Observable.h"

#include <QPushButton>

#include <memory>

namespace fernhollow {

class ElidedLabel;
class UpdateManager;
class UpdateStatusIcon;

/// How far updates have come, in the footer: a small picture and a word in the state's colour. A click looks
/// for updates, except while that, or a download, is under way.
///
/// Any number of changes ask for one redraw, at most one a frame, and none while it is hidden.
class UpdateStatusButton : public QPushButton {
    Q_OBJECT

public:
    explicit UpdateStatusButton(std::shared_ptr<UpdateManager> updateManager, QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void showEvent(QShowEvent* event) override;

private:
    void handleTap();
    void refresh();
    void describe(const QString& text, const QString& help, const QColor& color);

    std::shared_ptr<UpdateManager> updateManager_;
    UpdateStatusIcon* icon_;
    ElidedLabel* text_;
    Redraw redraw_{*this, [this] { refresh(); }};
    Observation stateObservation_;
};

} // namespace fernhollow
