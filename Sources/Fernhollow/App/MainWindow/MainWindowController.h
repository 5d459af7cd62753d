#pragma once

#include <QPointer>
#include <QWidget>

#include <memory>

namespace fernhollow {

class AccountManager;
class AppModel;
class Clock;
class UpdateManager;

/// The one main window: made when it is first shown, afterwards hidden and shown again, never remade.
class MainWindowController {
public:
    static MainWindowController& shared();

    /// Hides the window when it is visible, else shows it in front with the keyboard.
    void toggle(const std::shared_ptr<AppModel>& model, const std::shared_ptr<AccountManager>& account,
                const std::shared_ptr<UpdateManager>& updateManager, const Clock& clock);
    void show(const std::shared_ptr<AppModel>& model, const std::shared_ptr<AccountManager>& account,
              const std::shared_ptr<UpdateManager>& updateManager, const Clock& clock);

    /// Whether the window has been shown in this run.
    bool hasBeenShown() const { return window_ != nullptr; }

    /// Destroys the window, at the end of the program.
    void close();

private:
    void createWindow(const std::shared_ptr<AppModel>& model, const std::shared_ptr<AccountManager>& account,
                      const std::shared_ptr<UpdateManager>& updateManager, const Clock& clock);

    QPointer<QWidget> window_;
};

} // namespace fernhollow
