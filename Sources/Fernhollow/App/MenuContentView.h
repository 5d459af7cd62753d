#pragma once

#include "Support/Observable.h"

#include <QTimer>
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
class SignInView;
class TodayView;

/// The main window's content: what the account's state asks for, over the footer.
///
/// It follows the models: any number of changes ask for one redraw, at most one a frame, and none
/// while the window is hidden. What was typed survives hiding the window.
class MenuContentView : public QWidget {
public:
    MenuContentView(std::shared_ptr<AppModel> model, std::shared_ptr<AccountManager> account,
                    const Clock& clock);

protected:
    void showEvent(QShowEvent* event) override;

private:
    QWidget* makeFooter();
    void addShortcuts();
    void requestRefresh();
    void refresh();

    std::shared_ptr<AppModel> model_;
    std::shared_ptr<AccountManager> account_;
    std::vector<Observation> cancellables_;
    QTimer redraw_;

    QStackedLayout* mainArea_;
    SignInView* signIn_;
    TodayView* today_;
    QWidget* signInPage_;
    AccountButton* accountButton_;
    QPushButton* signOut_;
};

} // namespace fernhollow
