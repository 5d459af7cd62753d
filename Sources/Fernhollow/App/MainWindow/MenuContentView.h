#pragma once

#include "App/Widgets/Redraw.h"
#include "Support/Observable.h"

#include <QWidget>

#include <memory>
#include <vector>

class QLabel;
class QPushButton;
class QStackedLayout;

namespace fernhollow {

class AccountButton;
class AccountManager;
class AppModel;
class Clock;
class CountingState;
class OnboardingView;
class SignInView;
class UpdateManager;

/// The main window's content: what the account's state asks for, over the footer.
///
/// It follows the account: any number of changes ask for one redraw, at most one a frame, and none while the
/// window is hidden. What was typed survives hiding the window; what shows an account is made when it is
/// first needed.
class MenuContentView : public QWidget {
public:
    MenuContentView(std::shared_ptr<AppModel> model, std::shared_ptr<AccountManager> account,
                    std::shared_ptr<UpdateManager> updateManager, std::shared_ptr<CountingState> counting,
                    const Clock& clock);

protected:
    void showEvent(QShowEvent* event) override;

private:
    QWidget* makeFooter();
    QWidget* makeTrouble();
    QWidget* makeFooterLine();
    void showTrouble();
    void addShortcuts();
    void refresh();
    void showPage(QWidget* page);
    QWidget* onboarding();
    QWidget* dashboard();

    std::shared_ptr<AppModel> model_;
    std::shared_ptr<AccountManager> account_;
    std::shared_ptr<UpdateManager> updateManager_;
    std::shared_ptr<CountingState> counting_;
    const Clock& clock_;
    std::vector<Observation> cancellables_;
    Redraw redraw_{*this, [this] { refresh(); }};

    QStackedLayout* mainArea_;
    SignInView* signIn_;
    QWidget* signInPage_;
    OnboardingView* onboarding_ = nullptr; // while it is shown
    QWidget* dashboard_ = nullptr;         // once the introduction was completed
    QLabel* trouble_;
    QPushButton* troubleButton_;
    QWidget* troubleLine_ = nullptr; // hidden while all is well
    AccountButton* accountButton_;
    QPushButton* signOut_;
};

} // namespace fernhollow
