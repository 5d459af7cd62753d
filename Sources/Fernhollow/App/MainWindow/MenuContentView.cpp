#include "App/MainWindow/MenuContentView.h"

#include "App/Dashboard/ProductivityDashboard.h"
#include "App/Footer/AccountButton.h"
#include "App/MainWindow/SignInView.h"
#include "App/Onboarding/OnboardingView.h"
#include "App/Shell/CountingState.h"
#include "App/Status/Trouble.h"
#include "App/Status/UpdateStatusButton.h"
#include "App/Widgets/Theme.h"
#include "Model/AccountManager.h"
#include "Model/AppModel.h"

#include <QApplication>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QShortcut>
#include <QStackedLayout>
#include <QVBoxLayout>

namespace fernhollow {
namespace {

constexpr int footerHorizontalMargin = 16;
constexpr int footerVerticalMargin = 12;
constexpr int signInVerticalMargin = 16;

QWidget* centred(QWidget* view) {
    auto* page = new QWidget;
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, signInVerticalMargin, 0, signInVerticalMargin);
    layout->addWidget(view, 0, Qt::AlignCenter);
    return page;
}

/// Two halves side by side, or below each other where the window is too narrow for both.
class FooterLine : public QWidget {
public:
    FooterLine(QHBoxLayout* first, QHBoxLayout* second)
        : halves_(new QBoxLayout(QBoxLayout::LeftToRight, this)), first_(first), second_(second) {
        halves_->setContentsMargins(footerHorizontalMargin - AccountButton::outset, footerVerticalMargin,
                                    footerHorizontalMargin, footerVerticalMargin);
        halves_->addLayout(first, 1);
        halves_->addLayout(second);
    }

    QSize minimumSizeHint() const override { return {0, QWidget::minimumSizeHint().height()}; }

protected:
    void resizeEvent(QResizeEvent* event) override {
        QWidget::resizeEvent(event);
        const QMargins margins = halves_->contentsMargins();
        const int needed = first_->minimumSize().width() + second_->minimumSize().width() +
                           halves_->spacing() + margins.left() + margins.right();
        halves_->setDirection(needed > width() ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight);
    }

private:
    QBoxLayout* halves_;
    QHBoxLayout* first_;
    QHBoxLayout* second_;
};

QPushButton* makePlainButton(const QString& text, const QColor& color) {
    auto* button = new QPushButton(text);
    button->setProperty("plain", true);
    button->setAutoDefault(true);
    button->setFont(Theme::font(Theme::TextStyle::caption));
    Theme::setTextColor(*button, color);
    return button;
}

} // namespace

MenuContentView::MenuContentView(std::shared_ptr<AppModel> model, std::shared_ptr<AccountManager> account,
                                 std::shared_ptr<UpdateManager> updateManager,
                                 std::shared_ptr<CountingState> counting, const Clock& clock)
    : model_(std::move(model)), account_(std::move(account)), updateManager_(std::move(updateManager)),
      counting_(std::move(counting)), clock_(clock), mainArea_(new QStackedLayout),
      signIn_(new SignInView(account_)), signInPage_(centred(signIn_)),
      trouble_(Theme::makeLabel(QString(), Theme::TextStyle::caption, Theme::highlight)),
      troubleButton_(makePlainButton({}, Theme::tint)), accountButton_(new AccountButton(account_, clock)),
      signOut_(makePlainButton(QStringLiteral("Sign Out"), Theme::secondary)) {
    signInPage_->setFocusProxy(signIn_);
    mainArea_->addWidget(signInPage_);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(mainArea_, 1);
    layout->addWidget(Theme::makeDivider());
    layout->addWidget(makeFooter());

    const auto refresh = [this] { redraw_.request(); };
    cancellables_.push_back(account_->observe(refresh));
    cancellables_.push_back(counting_->observe(refresh));
    cancellables_.push_back(model_->isPaused.observe(refresh));
    cancellables_.push_back(model_->areCountsSaved.observe(refresh));
    cancellables_.push_back(model_->areCountsSent.observe(refresh));
    addShortcuts();
}

QWidget* MenuContentView::makeFooter() {
    auto* footer = new QWidget;
    footer->setAutoFillBackground(true);
    QPalette palette = footer->palette();
    palette.setColor(QPalette::Window, Theme::raised);
    footer->setPalette(palette);
    auto* layout = new QVBoxLayout(footer);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(makeTrouble());
    layout->addWidget(makeFooterLine());
    return footer;
}

QWidget* MenuContentView::makeTrouble() {
    trouble_->setWordWrap(true);
    connect(troubleButton_, &QPushButton::clicked, this, [this] {
        if (const auto perform = Trouble::now(model_, *counting_).perform) {
            perform();
        }
    });
    troubleLine_ = new QWidget;
    auto* layout = new QHBoxLayout(troubleLine_);
    layout->setContentsMargins(footerHorizontalMargin, footerVerticalMargin, footerHorizontalMargin, 0);
    layout->addWidget(trouble_, 1);
    layout->addWidget(troubleButton_, 0, Qt::AlignTop);
    troubleLine_->hide();
    return troubleLine_;
}

void MenuContentView::showTrouble() {
    const Trouble trouble = Trouble::now(model_, *counting_);
    trouble_->setText(trouble.sentence);
    troubleButton_->setText(trouble.button);
    troubleButton_->setVisible(!trouble.button.isEmpty());
    troubleLine_->setVisible(!trouble.sentence.isEmpty());
}

QWidget* MenuContentView::makeFooterLine() {
    connect(signOut_, &QPushButton::clicked, this, [this] { account_->signOut(); });
    auto* quit = makePlainButton(QStringLiteral("Quit"), Theme::primary);
    connect(quit, &QPushButton::clicked, qApp, &QCoreApplication::quit);

    auto* first = new QHBoxLayout;
    first->addWidget(accountButton_, 1);
    first->addStretch();
    first->addWidget(new UpdateStatusButton(updateManager_));
    first->addStretch();
    auto* second = new QHBoxLayout;
    second->addStretch();
    second->addWidget(signOut_);
    second->addWidget(quit);
    return new FooterLine(first, second);
}

void MenuContentView::addShortcuts() {
    connect(new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_W), this), &QShortcut::activated, this,
            &QWidget::close);
    connect(new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q), this), &QShortcut::activated, qApp,
            &QCoreApplication::quit);
}

void MenuContentView::showEvent(QShowEvent* event) {
    refresh();
    QWidget::showEvent(event);
}

void MenuContentView::refresh() {
    if (!isVisible()) {
        return;
    }
    const bool isSignedIn = account_->email().has_value();
    accountButton_->refresh(model_->deviceId());
    signOut_->setVisible(isSignedIn);
    showTrouble();
    signIn_->refresh();
    QWidget* page = signInPage_;
    if (isSignedIn) {
        page = account_->hasSeenOnboarding.get() ? dashboard() : onboarding();
    }
    showPage(page);
}

void MenuContentView::showPage(QWidget* page) {
    if (page != mainArea_->currentWidget() || !focusWidget()) {
        mainArea_->setCurrentWidget(page);
        page->setFocus();
        if (page == signInPage_) {
            signIn_->takeUp();
        }
    }
    if (onboarding_ != nullptr && page != onboarding_) {
        onboarding_->deleteLater(); // who comes next begins at its first step
        onboarding_ = nullptr;
    }
}

QWidget* MenuContentView::onboarding() {
    if (onboarding_ == nullptr) {
        onboarding_ = new OnboardingView([this] { account_->markOnboardingSeen(); });
        mainArea_->addWidget(onboarding_);
    }
    return onboarding_;
}

QWidget* MenuContentView::dashboard() {
    if (dashboard_ == nullptr) {
        dashboard_ = new ProductivityDashboard(model_, clock_);
        mainArea_->addWidget(dashboard_);
    }
    return dashboard_;
}

} // namespace fernhollow
