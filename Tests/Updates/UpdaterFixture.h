#pragma once

#include "Support/Releases.h"
#include "Support/Testing.h"
#include "Updates/UpdatePreferences.h"
#include "Updates/Updater.h"

#include <algorithm>
#include <coroutine>
#include <cstdint>
#include <exception>

namespace fernhollow::tests {

/// Something that a coroutine awaits until a test resolves it, or until its stop is requested.
template<class T>
class Pending {
public:
    void resolve(T value) {
        value_ = std::move(value);
        resume();
    }
    void fail(UpdateError::Reason reason, const std::string& description) {
        failure_ = std::make_exception_ptr(UpdateError(reason, description));
        resume();
    }
    bool isAwaited() const { return waiter_ != nullptr; }

    bool await_ready() const noexcept { return false; }
    void await_suspend(std::coroutine_handle<> waiter) noexcept { waiter_ = waiter; }
    T await_resume() {
        if (const auto failure = std::exchange(failure_, nullptr)) {
            std::rethrow_exception(failure);
        }
        return std::move(value_);
    }

private:
    void resume() {
        if (const auto waiter = std::exchange(waiter_, nullptr)) {
            waiter.resume();
        }
    }

    T value_{};
    std::exception_ptr failure_;
    std::coroutine_handle<> waiter_;
};

struct FakeSource final : UpdateSource {
    QCoro::Task<std::optional<AppcastItem>> newest(std::stop_token stop) override {
        ++checks;
        const std::stop_callback onStop(stop,
                                        [this] { found.fail(UpdateError::Reason::cancelled, "Cancelled."); });
        co_return co_await found;
    }
    QCoro::Task<std::shared_ptr<DownloadedUpdate>>
    package(AppcastItem /*item*/, UpdateTransfer::Progress report, std::stop_token stop) override {
        ++downloads;
        progress = std::move(report);
        const std::stop_callback onStop(stop,
                                        [this] { file.fail(UpdateError::Reason::cancelled, "Cancelled."); });
        co_return co_await file;
    }
    void removeLeftovers() override { ++removals; }

    Pending<std::optional<AppcastItem>> found;
    Pending<std::shared_ptr<DownloadedUpdate>> file;
    UpdateTransfer::Progress progress;
    int checks = 0;
    int downloads = 0;
    int removals = 0;
};

struct FakeInstaller final : UpdateInstaller {
    std::string packageType() const override { return kind; }
    QCoro::Task<Outcome> install(std::shared_ptr<DownloadedUpdate> /*update*/) override {
        ++installations;
        if (failure) {
            throw *failure;
        }
        co_return outcome;
    }
    std::string handOverNote() const override { return "Open the folder."; }
    void relaunch() override { ++relaunches; }

    std::string kind = "appimage";
    Outcome outcome = Outcome::relaunch;
    std::optional<UpdateError> failure;
    int installations = 0;
    int relaunches = 0;
};

/// Windows as lines: what they would show, in its order.
struct FakeDriver final : UserDriver {
    QCoro::Task<std::optional<bool>> askPermission() override {
        shown.emplace_back("permission");
        co_return co_await permission;
    }
    void showChecking(std::function<void()> onCancel) override { note("checking", std::move(onCancel)); }
    QCoro::Task<UpdateChoice> showUpdateFound(AppcastItem item, bool canInstall, bool isGentle) override {
        shown.push_back((isGentle ? "gently found " : "found ") + item.displayVersion +
                        (canInstall ? "" : " to read"));
        co_return co_await choice;
    }
    void showDownloading(AppcastItem item, std::function<void()> onCancel) override {
        note("downloading " + item.displayVersion, std::move(onCancel));
    }
    void showProgress(std::uint64_t received, std::uint64_t expected) override {
        shown.push_back(std::to_string(received) + "/" + std::to_string(expected));
    }
    QCoro::Task<UpdateChoice> showReadyToInstall(AppcastItem item) override {
        shown.push_back("ready " + item.displayVersion);
        co_return co_await choice;
    }
    void showInstalling(AppcastItem item) override { shown.push_back("installing " + item.displayVersion); }
    void showUpToDate(std::string version) override { shown.push_back("up to date " + version); }
    void showError(std::string description) override { shown.push_back("error: " + description); }
    void showNote(std::string text) override { shown.push_back("note: " + text); }
    void focus() override { shown.emplace_back("focus"); }
    void dismiss() override {
        shown.emplace_back("dismiss");
        if (permission.isAwaited()) {
            permission.resolve(std::nullopt);
        } else if (choice.isAwaited()) {
            choice.resolve(UpdateChoice::later);
        }
    }

    void note(std::string line, std::function<void()> onCancel) {
        shown.push_back(std::move(line));
        cancel = std::move(onCancel);
    }

    std::vector<std::string> shown;
    std::function<void()> cancel;
    Pending<std::optional<bool>> permission;
    Pending<UpdateChoice> choice;
};

/// The calls of an updater, in their order.
struct RecordingDelegate final : UpdaterDelegate, UserDriverDelegate {
    void mayPerform(UpdateCheck check) override {
        calls.emplace_back(check == UpdateCheck::scheduled ? "begin scheduled" : "begin");
    }
    void didFindValidUpdate(const AppcastItem& item) override {
        calls.push_back("found " + item.displayVersion);
    }
    void updaterDidNotFindUpdate(const std::string& /*error*/) override { calls.emplace_back("nothing"); }
    void didAbortWithError(const std::string& error) override { calls.push_back("abort: " + error); }
    void willDownloadUpdate(const AppcastItem& /*item*/) override { calls.emplace_back("download"); }
    void didDownloadUpdate(const AppcastItem& /*item*/) override { calls.emplace_back("downloaded"); }
    void willInstallUpdate(const AppcastItem& /*item*/) override { calls.emplace_back("install"); }
    void didFinishUpdateCycleFor(UpdateCheck /*check*/, const std::optional<std::string>& error) override {
        calls.push_back(error ? "end: " + *error : "end");
    }
    bool supportsGentleScheduledUpdateReminders() const override { return true; }
    void standardUserDriverWillHandleShowingUpdate(bool /*handlesShowing*/,
                                                   const AppcastItem& /*item*/) override {
        calls.emplace_back("show");
    }

    std::vector<std::string> calls;
};

/// An updater of version 0.2.0 between fakes, with a clock that a test moves.
class UpdaterFixture : public testing::Test {
protected:
    UpdaterFixture() { restart(); }
    ~UpdaterFixture() override { updater_->stop(); }

    /// Ends the updater as the program's end does, and starts it anew.
    void restart() {
        if (updater_) {
            updater_->stop();
        }
        driver_->shown.clear();
        delegate_.calls.clear();
        updater_ = std::make_shared<Updater>(
            "0.2.0", configuration_,
            Updater::Surroundings{.clock = clock_,
                                  .source = source_,
                                  .installer = installer_,
                                  .driver = driver_,
                                  .quit = [this] { delegate_.calls.emplace_back("quit"); }},
            delegate_, delegate_);
        updater_->start();
    }

    /// Until the cycle under way has come to the source.
    void expectCheck() {
        ASSERT_TRUE(waitUntil([this] { return source_->found.isAwaited(); }));
    }

    void check() {
        updater_->checkForUpdates();
        expectCheck();
    }

    /// As far as the offer of 0.3.0, to a person who asked.
    void find(const std::string& version = "0.3.0") {
        check();
        source_->found.resolve(release(version));
    }

    void choose(UpdateChoice choice) {
        ASSERT_TRUE(driver_->choice.isAwaited());
        driver_->choice.resolve(choice);
    }

    void finishDownload(const std::string& version = "0.3.0") {
        ASSERT_TRUE(source_->file.isAwaited());
        const auto folder = home_.path() / ("download-" + version);
        std::filesystem::create_directory(folder);
        std::ofstream(folder / "package") << "new program";
        source_->file.resolve(
            std::make_shared<DownloadedUpdate>(folder, folder / "package", release(version)));
    }

    /// As far as the question whether to install the release.
    void download(const std::string& version = "0.3.0") {
        find(version);
        choose(UpdateChoice::install);
        finishDownload(version);
    }

    std::filesystem::path package(const std::string& version = "0.3.0") const {
        return home_.path() / ("download-" + version) / "package";
    }

    std::vector<std::string> takeCalls() { return std::exchange(delegate_.calls, {}); }
    std::vector<std::string> takeShown() { return std::exchange(driver_->shown, {}); }

    TemporaryHome home_;
    FakeClock clock_{at("UTC", {.year = 2026, .month = 3, .day = 5, .hour = 9})};
    std::shared_ptr<FakeSource> source_ = std::make_shared<FakeSource>();
    std::shared_ptr<FakeInstaller> installer_ = std::make_shared<FakeInstaller>();
    std::shared_ptr<FakeDriver> driver_ = std::make_shared<FakeDriver>();
    RecordingDelegate delegate_;
    std::optional<UpdateConfiguration> configuration_{
        UpdateConfiguration{"https://example.org/appcast.xml", "key"}};
    std::shared_ptr<Updater> updater_;
};

} // namespace fernhollow::tests
