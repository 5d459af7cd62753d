#include "App/MainWindow/SignInView.h"

#include "App/Widgets/Symbol.h"
#include "App/Widgets/Theme.h"
#include "Model/AccountManager.h"

#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>

namespace fernhollow {
namespace {

constexpr QSize formSize{320, 340};
constexpr QSize symbolSize{60, 60};
constexpr int formSpacing = 20;
constexpr int fieldSpacing = 6;
constexpr int sideMargin = 24;

} // namespace

SignInView::SignInView(std::shared_ptr<AccountManager> account, QWidget* parent)
    : QWidget(parent), account_(std::move(account)) {
    auto* name = new QLabel(QStringLiteral("Fernhollow"));
    name->setFont(Theme::font(Theme::TextStyle::title2, QFont::DemiBold));
    name->setAlignment(Qt::AlignCenter);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(sideMargin, 0, sideMargin, 0);
    layout->setSpacing(formSpacing);
    layout->addStretch();
    layout->addWidget(new Symbol(QStringLiteral("keyboard-fill"), Theme::primary, symbolSize), 0,
                      Qt::AlignHCenter);
    layout->addWidget(name);
    layout->addWidget(makeFields());
    setFocusProxy(email_);
    layout->addWidget(makeButton());
    layout->addWidget(makeReason());
    layout->addStretch();

    setFixedWidth(formSize.width());
    setMinimumHeight(formSize.height()); // grows with a user's larger font instead of clipping it
    refresh();
}

QLabel* SignInView::makeReason() {
    auto* reason = Theme::makeLabel(
        QStringLiteral("Your address adds up the counts of all your machines. There is no password."),
        Theme::TextStyle::caption, Theme::tertiary);
    reason->setWordWrap(true);
    reason->setAlignment(Qt::AlignCenter);
    return reason;
}

void SignInView::takeUp() {
    email_->setFocus();
    email_->end(false); // nothing is selected that the next key would replace
}

QWidget* SignInView::makeFields() {
    email_ = new QLineEdit;
    email_->setPlaceholderText(QStringLiteral("Email"));
    email_->setAccessibleName(QStringLiteral("Email"));
    email_->setInputMethodHints(Qt::ImhEmailCharactersOnly | Qt::ImhNoAutoUppercase |
                                Qt::ImhNoPredictiveText);
    email_->setFont(Theme::font(Theme::TextStyle::body));
    connect(email_, &QLineEdit::returnPressed, this, &SignInView::submit);
    connect(email_, &QLineEdit::textChanged, this, [this] {
        refusal_.clear(); // the address is being corrected
        refresh();
    });

    error_ = new QLabel;
    error_->setFont(Theme::font(Theme::TextStyle::caption));
    error_->setWordWrap(true);
    Theme::setTextColor(*error_, Theme::failure);

    auto* fields = new QWidget;
    auto* layout = new QVBoxLayout(fields);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(fieldSpacing);
    layout->addWidget(email_);
    layout->addWidget(error_);
    return fields;
}

QPushButton* SignInView::makeButton() {
    button_ = new QPushButton;
    button_->setProperty("prominent", true);
    button_->setFont(Theme::font(Theme::TextStyle::body, QFont::Medium));
    button_->setAutoDefault(true);
    connect(button_, &QPushButton::clicked, this, &SignInView::submit);
    return button_;
}

void SignInView::refresh() {
    const bool isVerifying = account_->isVerifying.get();
    button_->setText(isVerifying ? QStringLiteral("Verifying...") : QStringLiteral("Sign In"));
    button_->setEnabled(!isVerifying && !email_->text().isEmpty());

    const auto& message = account_->errorMessage.get();
    const QString error = message ? QString::fromStdString(*message) : refusal_;
    error_->setText(error);
    error_->setVisible(!error.isEmpty());
    email_->setAccessibleDescription(error);
}

void SignInView::submit() {
    if (button_->isEnabled()) {
        signIn(account_, email_->text(), this);
    }
}

QCoro::Task<> SignInView::signIn(std::shared_ptr<AccountManager> account, QString email,
                                 QPointer<SignInView> view) {
    QString refusal;
    try {
        co_await account->verifyEmail(email.toStdString());
    } catch (const AccountManager::AccountError& error) {
        refusal = QString::fromUtf8(error.what());
    }
    if (view) {
        view->refusal_ = refusal;
        view->refresh();
    }
}

} // namespace fernhollow
