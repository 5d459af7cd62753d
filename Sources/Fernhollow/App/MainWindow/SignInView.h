#pragma once

#include <QPointer>
#include <QString>
#include <QWidget>
#include <qcorotask.h>

#include <memory>

class QLabel;
class QLineEdit;
class QPushButton;

namespace fernhollow {

class AccountManager;

/// The form that asks for an e-mail address while no account is signed in.
class SignInView : public QWidget {
public:
    explicit SignInView(std::shared_ptr<AccountManager> account, QWidget* parent = nullptr);

    /// Shows what the account says of the sign-in now.
    void refresh();

    /// Gives the keyboard to what was typed before, to be gone on with.
    void takeUp();

private:
    void submit();
    static QCoro::Task<> signIn(std::shared_ptr<AccountManager> account, QString email,
                                QPointer<SignInView> view);

    QWidget* makeFields();
    QPushButton* makeButton();
    static QLabel* makeReason();

    std::shared_ptr<AccountManager> account_;
    QString refusal_; ///< why the last try was refused
    QLineEdit* email_ = nullptr;
    QLabel* error_ = nullptr;
    QPushButton* button_ = nullptr;
};

} // namespace fernhollow
