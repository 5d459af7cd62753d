#pragma once

#include "App/Widgets/WindowController.h"

namespace fernhollow {

struct AppStateHolder;

/// The one main window.
class MainWindowController final : public WindowController {
public:
    static MainWindowController& shared();

    /// Hides the window when it is visible, else shows it in front with the keyboard. `objects` holds them
    /// all.
    void toggle(const AppStateHolder& objects, const ActivationToken& token);
    void show(const AppStateHolder& objects, const ActivationToken& token);

private:
    void createWindow(const AppStateHolder& objects);
};

} // namespace fernhollow
