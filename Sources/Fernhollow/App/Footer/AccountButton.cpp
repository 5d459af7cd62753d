#include "App/Footer/AccountButton.h"

#include "App/Footer/DevicesPopover.h"
#include "App/Widgets/ElidedLabel.h"
#include "App/Widgets/Symbol.h"
#include "App/Widgets/Theme.h"
#include "Model/AccountManager.h"

#include <QHBoxLayout>

namespace fernhollow {
namespace {

constexpr int spacing = 4;
constexpr int verticalOutset = 3;
constexpr double chevronSize = 0.7; // of a line of text

QSize chevronSizeBeside(const QFont& font) {
    const int side = qRound(QFontMetrics(font).height() * chevronSize);
    return {side, side};
}

} // namespace

AccountButton::AccountButton(std::shared_ptr<AccountManager> account, const Clock& clock, QWidget* parent)
    : QPushButton(parent), account_(std::move(account)), clock_(clock), email_(new ElidedLabel),
      chevron_(new Symbol(QStringLiteral("chevron-down"), Theme::tertiary,
                          chevronSizeBeside(Theme::font(Theme::TextStyle::caption2)))) {
    setProperty("plain", true);
    setAutoDefault(true);
    setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Preferred);
    email_->setFont(Theme::font(Theme::TextStyle::caption2));
    Theme::setTextColor(*email_, Theme::tertiary);

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(outset, verticalOutset, outset, verticalOutset);
    layout->setSpacing(spacing);
    layout->addWidget(email_);
    layout->addWidget(chevron_);
    connect(this, &QPushButton::clicked, this, &AccountButton::toggleDevices);
    showState();
}

void AccountButton::refresh(const std::string& thisDevice) {
    thisDevice_ = thisDevice;
    const auto email = account_->email();
    setVisible(email.has_value());
    if (!email) {
        if (devices_) {
            devices_->close();
        }
        return;
    }
    email_->setFullText(QString::fromStdString(*email));
    setAccessibleName(QString::fromStdString(*email));
    chevron_->setVisible(!account_->connectedDevices.get().empty());
    if (devices_) {
        devices_->setDevices(account_->connectedDevices.get(), thisDevice_);
    }
}

void AccountButton::toggleDevices() {
    if (devices_) {
        devices_->close();
        return;
    }
    devices_ = new DevicesPopover(clock_, this);
    connect(devices_, &DevicesPopover::closed, this, [this] {
        devices_.clear(); // it is deleted in the next turn of the event loop
        showState();
    });
    devices_->setDevices(account_->connectedDevices.get(), thisDevice_);
    devices_->show();
    devices_->setFocus(Qt::PopupFocusReason);
    showState();
}

void AccountButton::showState() {
    chevron_->setName(devices_ ? QStringLiteral("chevron-up") : QStringLiteral("chevron-down"));
    setAccessibleDescription(devices_ ? QStringLiteral("Hide connected devices")
                                      : QStringLiteral("Show connected devices"));
}

QSize AccountButton::sizeHint() const {
    return layout()->totalSizeHint();
}

QSize AccountButton::minimumSizeHint() const {
    return layout()->totalMinimumSize();
}

} // namespace fernhollow
