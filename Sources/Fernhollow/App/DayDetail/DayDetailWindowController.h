#pragma once

#include "App/Widgets/WindowController.h"
#include "Support/Clock.h"

#include <memory>

namespace fernhollow {

class AppModel;
class DayDetailView;

/// The one window for a day's details; another day replaces its content.
class DayDetailWindowController final : public WindowController {
public:
    static DayDetailWindowController& shared();

    /// Shows the day of `date` from the start, in front with the keyboard.
    void showWindow(Instant date, const std::shared_ptr<AppModel>& model, const Clock& clock);

private:
    void createWindow();

    QPointer<DayDetailView> view_;
};

} // namespace fernhollow
