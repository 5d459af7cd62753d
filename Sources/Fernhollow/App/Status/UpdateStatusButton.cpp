#include "App/Status/UpdateStatusButton.h"

#include "App/Status/UpdateStatusIcon.h"
#include "App/Widgets/ElidedLabel.h"
#include "App/Widgets/Theme.h"
#include "Model/UpdateManager.h"

#include <QHBoxLayout>

#include <utility>
#include <variant>

namespace fernhollow {
namespace {

constexpr int spacing = 4;
constexpr int horizontalOutset = 6; // what stands out of the text to show the keyboard's focus
constexpr int verticalOutset = 3;

const QString check = QStringLiteral("check-circle-fill");
const QString arrowDown = QStringLiteral("arrow-down-circle-fill");
const QString exclamation = QStringLiteral("exclamation-circle-fill");

/// What one state looks like.
struct Look {
    QString text;
    QString help;
    QColor color;
};

Look currentVersionLook() {
    const QString version = QStringLiteral("v") + QString::fromStdString(UpdateManager::currentVersion());
    return {version, QStringLiteral("You're running the latest version (%1)").arg(version), Theme::secondary};
}

struct ShowState {
    UpdateStatusIcon& icon;

    Look operator()(const UpdateIdle& /*state*/) const { return withSymbol(check, currentVersionLook()); }
    Look operator()(const UpdateUpToDate& /*state*/) const { return withSymbol(check, currentVersionLook()); }
    Look operator()(const UpdateChecking& /*state*/) const {
        icon.showSpinner(Theme::secondary);
        return {QStringLiteral("Checking..."), QStringLiteral("Checking for updates..."), Theme::secondary};
    }
    Look operator()(const UpdateAvailable& state) const {
        const QString version = QStringLiteral("v") + QString::fromStdString(state.version);
        return withSymbol(arrowDown,
                          {version, QStringLiteral("Update available: ") + version, Theme::failure});
    }
    Look operator()(const UpdateDownloading& state) const {
        icon.showRing(state.progress, Theme::highlight);
        const auto percent = static_cast<long long>(state.progress * 100);
        return {QString::number(percent) + QStringLiteral("%"), QStringLiteral("Downloading update..."),
                Theme::highlight};
    }
    Look operator()(const UpdateReadyToInstall& /*state*/) const {
        return withSymbol(arrowDown, {QStringLiteral("Restart"),
                                      QStringLiteral("Click to restart and apply update"), Theme::success});
    }
    Look operator()(const UpdateFailed& state) const {
        return withSymbol(exclamation, {QStringLiteral("Error"),
                                        QStringLiteral("Error: ") + QString::fromStdString(state.message),
                                        Theme::failure});
    }

    Look withSymbol(const QString& name, Look look) const {
        icon.showSymbol(name, look.color);
        return look;
    }
};

} // namespace

UpdateStatusButton::UpdateStatusButton(std::shared_ptr<UpdateManager> updateManager, QWidget* parent)
    : QPushButton(parent), updateManager_(std::move(updateManager)), icon_(new UpdateStatusIcon),
      text_(new ElidedLabel(Qt::ElideRight)) {
    setProperty("plain", true);
    setAutoDefault(true);
    setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Preferred);
    text_->setFont(Theme::font(Theme::TextStyle::caption));
    text_->setAttribute(Qt::WA_TransparentForMouseEvents); // the button's own tooltip says it all

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(horizontalOutset, verticalOutset, horizontalOutset, verticalOutset);
    layout->setSpacing(spacing);
    layout->addWidget(icon_);
    layout->addWidget(text_);

    connect(this, &QPushButton::clicked, this, &UpdateStatusButton::handleTap);
    stateObservation_ = updateManager_->state.observe([this] { redraw_.request(); });
    refresh();
}

void UpdateStatusButton::handleTap() {
    const UpdateState& state = updateManager_->state.get();
    if (!std::holds_alternative<UpdateChecking>(state) && !std::holds_alternative<UpdateDownloading>(state)) {
        updateManager_->checkForUpdates();
    }
}

void UpdateStatusButton::showEvent(QShowEvent* event) {
    refresh();
    QPushButton::showEvent(event);
}

void UpdateStatusButton::refresh() {
    const Look look = std::visit(ShowState{*icon_}, updateManager_->state.get());
    describe(look.text, look.help, look.color);
}

void UpdateStatusButton::describe(const QString& text, const QString& help, const QColor& color) {
    text_->setFullText(text);
    Theme::setTextColor(*text_, color);
    setAccessibleName(text);
    setAccessibleDescription(help);
    // A tooltip reads what looks like HTML as HTML.
    setToolTip(Qt::mightBeRichText(help) ? QStringLiteral("<span>%1</span>").arg(help.toHtmlEscaped())
                                         : help);
}

QSize UpdateStatusButton::sizeHint() const {
    return layout()->totalSizeHint();
}

// Every text but an unusually long version is shown in full; the address beside it gives way first.
QSize UpdateStatusButton::minimumSizeHint() const {
    const int usual = text_->fontMetrics().horizontalAdvance(QStringLiteral("v000.000.000"));
    const QSize shortest = layout()->totalMinimumSize();
    const int missing =
        std::max(0, std::min(text_->sizeHint().width(), usual) - text_->minimumSizeHint().width());
    return {shortest.width() + missing, shortest.height()};
}

} // namespace fernhollow
