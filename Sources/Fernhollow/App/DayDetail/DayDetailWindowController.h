#pragma once

#include "Support/Clock.h"

#include <QPointer>
#include <QWidget>

#include <memory>

namespace fernhollow {

class AppModel;
class DayDetailView;

/// The one window for a day's details: made when it is first shown; another day replaces its content.
class DayDetailWindowController {
public:
    static DayDetailWindowController& shared();

    /// Shows the day of `date` from the start, in front with the keyboard.
    void showWindow(Instant date, const std::shared_ptr<AppModel>& model, const Clock& clock);

    /// Destroys the window, at the end of the program.
    void close();

private:
    void createWindow();

    QPointer<QWidget> window_;
    QPointer<DayDetailView> view_;
};

} // namespace fernhollow
