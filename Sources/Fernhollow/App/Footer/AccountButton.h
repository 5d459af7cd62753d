#pragma once

#include <QPointer>
#include <QPushButton>

#include <memory>
#include <string>

namespace fernhollow {

class AccountManager;
class Clock;
class DevicesPopover;
class ElidedLabel;
class Symbol;

/// The signed-in address in the footer; it opens and closes the list of the account's devices.
///
/// Shows the account as it is at each refresh(), and the list with it while it is open. Hidden while
/// no account is signed in. Lives in the main window.
class AccountButton : public QPushButton {
    Q_OBJECT

public:
    /// What stands out of the text on each side to show the keyboard's focus.
    static constexpr int outset = 7;

    AccountButton(std::shared_ptr<AccountManager> account, const Clock& clock, QWidget* parent = nullptr);

    /// `thisDevice` is the identifier of this machine.
    void refresh(const std::string& thisDevice);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

private:
    void toggleDevices();
    void showState();

    std::shared_ptr<AccountManager> account_;
    const Clock& clock_;
    std::string thisDevice_;
    ElidedLabel* email_;
    Symbol* chevron_;
    QPointer<DevicesPopover> devices_;
};

} // namespace fernhollow
