#include "App/Updates/StandardUserDriver.h"

#include "App/Updates/Question.h"
#include "App/Updates/UpdatePages.h"
#include "App/Updates/UpdateWindow.h"
#include "Updates/UpdateNotification.h"
#include "Updates/UpdatePreferences.h"

#include <algorithm>
#include <utility>

namespace fernhollow {
namespace {

template<class T>
QCoro::Task<T> answerTo(Question<T> question) {
    co_return co_await question;
}

} // namespace

StandardUserDriver::StandardUserDriver(std::string currentVersion, const QDBusConnection& bus)
    : currentVersion_(std::move(currentVersion)), bus_(bus) {}

StandardUserDriver::~StandardUserDriver() = default;

QCoro::Task<std::optional<bool>> StandardUserDriver::askPermission() {
    const Question<std::optional<bool>> question;
    present(UpdatePages::permission(question), Showing::quietly,
            [question] { question.answer(std::nullopt); });
    return answerTo(question);
}

void StandardUserDriver::showChecking(std::function<void()> cancel) {
    present(UpdatePages::checking(std::move(cancel)), Showing::inFront);
}

QCoro::Task<UpdateChoice> StandardUserDriver::showUpdateFound(AppcastItem item, bool canInstall,
                                                              bool isGentle) {
    const Question<UpdateChoice> question;
    if (isGentle) {
        hide(); // a note that was left open
    }
    present(UpdatePages::found(item, currentVersion_, canInstall, question),
            isGentle ? Showing::asItIs : Showing::inFront,
            [question] { question.answer(UpdateChoice::later); });
    if (isGentle) {
        announce(item.version, item.displayVersion);
    }
    return answerTo(question);
}

void StandardUserDriver::showDownloading(AppcastItem item, std::function<void()> cancel) {
    present(UpdatePages::downloading(item, std::move(cancel)), Showing::asItIs);
    showProgress(0, item.length);
}

void StandardUserDriver::showProgress(std::uint64_t received, std::uint64_t expected) {
    if (window_) {
        const double fraction =
            expected == 0 ? 0 : static_cast<double>(received) / static_cast<double>(expected);
        window_->setProgress(std::min(fraction, 1.0), UpdatePages::downloadedAmount(received, expected));
    }
}

QCoro::Task<UpdateChoice> StandardUserDriver::showReadyToInstall(AppcastItem item) {
    const Question<UpdateChoice> question;
    present(UpdatePages::ready(item, question), Showing::asItIs,
            [question] { question.answer(UpdateChoice::later); });
    return answerTo(question);
}

void StandardUserDriver::showInstalling(AppcastItem item) {
    present(UpdatePages::installing(item), Showing::asItIs);
}

void StandardUserDriver::showUpToDate(std::string currentVersion) {
    present(UpdatePages::upToDate(currentVersion, [this] { hide(); }), Showing::asItIs);
}

// A failure is shown even when the window was closed meanwhile, but it does not take the keyboard focus.
void StandardUserDriver::showError(std::string description) {
    present(UpdatePages::error(description, [this] { hide(); }), Showing::quietly);
}

void StandardUserDriver::showNote(std::string text) {
    present(UpdatePages::note(text, [this] { hide(); }), Showing::inFront);
}

void StandardUserDriver::focus() {
    if (hasPage_) {
        window_->showInFront(activationToken_);
    }
    if (notification_) {
        notification_->close();
    }
}

void StandardUserDriver::dismiss() {
    hide();
    if (notification_) {
        notification_->close();
    }
    answerOpenQuestion();
}

void StandardUserDriver::present(UpdatePage page, Showing showing, std::function<void()> answerUnanswered) {
    answerOpenQuestion();
    if (!window_) {
        window_ = std::make_unique<UpdateWindow>();
    }
    answerUnanswered_ = std::move(answerUnanswered);
    hasPage_ = true;
    window_->setPage(std::move(page));
    if (showing == Showing::inFront) {
        window_->showInFront(activationToken_);
    } else if (showing == Showing::quietly && !window_->isVisible()) {
        window_->showQuietly();
    }
}

void StandardUserDriver::answerOpenQuestion() {
    if (const auto answer = std::exchange(answerUnanswered_, nullptr)) {
        answer();
    }
}

void StandardUserDriver::hide() {
    hasPage_ = false;
    if (window_) {
        window_->hide();
    }
}

void StandardUserDriver::announce(const std::string& version, const std::string& displayVersion) {
    if (UpdatePreferences::announcedVersion() == version) {
        return;
    }
    UpdatePreferences::setAnnouncedVersion(version);
    if (!notification_) {
        notification_ = std::make_unique<UpdateNotification>(bus_, [this](const ActivationToken& token) {
            activationToken_ = token;
            notificationChosen_();
            activationToken_.clear();
        });
    }
    notification_->show(shortenedVersion(QString::fromStdString(displayVersion)).toStdString());
}

} // namespace fernhollow
