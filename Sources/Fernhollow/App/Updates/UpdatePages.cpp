#include "App/Updates/UpdatePages.h"

#include "Support/UserLocale.h"

#include <QLocale>

#include <algorithm>
#include <limits>
#include <utility>

namespace fernhollow::UpdatePages {
namespace {

constexpr int sizeDecimals = 1;

QString version(const AppcastItem& item) {
    return shortenedVersion(QString::fromStdString(item.displayVersion));
}

std::function<void()> choose(const Question<UpdateChoice>& question, UpdateChoice choice) {
    return [question, choice] { question.answer(choice); };
}

// Not the default: a person who presses Return twice does not want to cancel what they began.
UpdatePage withCancelButton(UpdatePage page, std::function<void()> cancel) {
    page.buttons = {{.text = QStringLiteral("Cancel"), .chosen = std::move(cancel)}};
    return page;
}

// A button that does what closing the window does.
UpdatePage withCloseButton(UpdatePage page, const QString& text, std::function<void()> close) {
    page.buttons = {{.text = text, .chosen = std::move(close), .isDefault = true}};
    return page;
}

std::vector<UpdatePage::Button> offerButtons(const Question<UpdateChoice>& question) {
    return {{.text = QStringLiteral("Skip This Version"),
             .chosen = choose(question, UpdateChoice::skip),
             .isApart = true},
            {.text = QStringLiteral("Remind Me Later"), .chosen = choose(question, UpdateChoice::later)},
            {.text = QStringLiteral("Install Update"),
             .chosen = choose(question, UpdateChoice::install),
             .isDefault = true}};
}

} // namespace

UpdatePage permission(const Question<std::optional<bool>>& question) {
    return {
        .title = QStringLiteral("Check for updates automatically?"),
        .text = QStringLiteral("Fernhollow can look for a new version once a day. It sends nothing about you "
                               "or your typing, and installs nothing without asking. You can always check "
                               "yourself by clicking the version at the bottom of the main window."),
        .buttons = {{.text = QStringLiteral("Don’t Check"), .chosen = [question] { question.answer(false); }},
                    {.text = QStringLiteral("Check Automatically"),
                     .chosen = [question] { question.answer(true); },
                     .isDefault = true}},
        .closed = [question] { question.answer(std::nullopt); }};
}

UpdatePage checking(std::function<void()> cancel) {
    UpdatePage page{.title = QStringLiteral("Checking for updates..."),
                    .progress = UpdatePage::Progress::busy,
                    .closed = cancel};
    return withCancelButton(std::move(page), std::move(cancel));
}

UpdatePage found(const AppcastItem& item, const std::string& currentVersion, bool canInstall,
                 const Question<UpdateChoice>& question) {
    const QString notes = QString::fromStdString(item.releaseNotes).trimmed();
    UpdatePage page{.title = QStringLiteral("A new version of Fernhollow is available"),
                    .text = QStringLiteral("Fernhollow %1 is available; you have %2.")
                                .arg(version(item), shortenedVersion(QString::fromStdString(currentVersion))),
                    .notes = notes.isEmpty() ? QStringLiteral("There are no notes for this version.") : notes,
                    .closed = choose(question, UpdateChoice::later)};
    if (canInstall) {
        page.buttons = offerButtons(question);
        return page;
    }
    page.text += QStringLiteral(" This build is updated from its source.");
    return withCloseButton(std::move(page), QStringLiteral("Close"), choose(question, UpdateChoice::later));
}

UpdatePage downloading(const AppcastItem& item, std::function<void()> cancel) {
    UpdatePage page{.title = QStringLiteral("Downloading Fernhollow %1...").arg(version(item)),
                    .progress = UpdatePage::Progress::measured,
                    .closed = cancel};
    return withCancelButton(std::move(page), std::move(cancel));
}

UpdatePage ready(const AppcastItem& item, const Question<UpdateChoice>& question) {
    return {.title = QStringLiteral("Fernhollow %1 is ready to install").arg(version(item)),
            .text = QStringLiteral("Your counts are saved before Fernhollow restarts."),
            .buttons = {{.text = QStringLiteral("Later"), .chosen = choose(question, UpdateChoice::later)},
                        {.text = QStringLiteral("Install and Relaunch"),
                         .chosen = choose(question, UpdateChoice::install),
                         .isDefault = true}},
            .closed = choose(question, UpdateChoice::later)};
}

UpdatePage installing(const AppcastItem& item) {
    return {.title = QStringLiteral("Installing Fernhollow %1...").arg(version(item)),
            .progress = UpdatePage::Progress::busy};
}

UpdatePage upToDate(const std::string& currentVersion, std::function<void()> close) {
    return withCloseButton({.title = QStringLiteral("Fernhollow is up to date"),
                            .text = QStringLiteral("Version %1 is the newest version.")
                                        .arg(shortenedVersion(QString::fromStdString(currentVersion)))},
                           QStringLiteral("OK"), std::move(close));
}

UpdatePage error(const std::string& description, std::function<void()> close) {
    return withCloseButton({.title = QStringLiteral("Fernhollow could not be updated"),
                            .text = QString::fromStdString(description) +
                                    QStringLiteral(" Nothing was changed; you can try again at any time.")},
                           QStringLiteral("OK"), std::move(close));
}

UpdatePage note(const std::string& text, std::function<void()> close) {
    return withCloseButton({.title = QStringLiteral("Fernhollow"), .text = QString::fromStdString(text)},
                           QStringLiteral("OK"), std::move(close));
}

QString downloadedAmount(std::uint64_t received, std::uint64_t expected) {
    const QLocale locale(QString::fromStdString(userLocale("LC_NUMERIC")));
    const auto size = [&locale](std::uint64_t bytes) {
        constexpr std::uint64_t most = std::numeric_limits<qint64>::max();
        return locale.formattedDataSize(static_cast<qint64>(std::min(bytes, most)), sizeDecimals,
                                        QLocale::DataSizeSIFormat);
    };
    return expected == 0 ? size(received) : QStringLiteral("%1 of %2").arg(size(received), size(expected));
}

} // namespace fernhollow::UpdatePages
