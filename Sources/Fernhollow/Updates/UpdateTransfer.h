#pragma once

#include "Support/SerialExecutor.h"
#include "Updates/AppcastItem.h"

#include <qcorotask.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <stop_token>
#include <string>

class QNetworkAccessManager;

namespace fernhollow {

class Clock;

/// A verified package in a folder that only its user can read. The folder is removed with this object.
class DownloadedUpdate {
public:
    explicit DownloadedUpdate(std::filesystem::path folder, std::filesystem::path file, AppcastItem item);
    ~DownloadedUpdate();
    DownloadedUpdate(const DownloadedUpdate&) = delete;
    DownloadedUpdate& operator=(const DownloadedUpdate&) = delete;

    const std::filesystem::path& file() const { return file_; }
    const AppcastItem& item() const { return item_; }

    /// Keeps the folder, for a person or an installer that needs the file after this program has ended.
    void keep() { isKept_ = true; }

private:
    std::filesystem::path folder_;
    std::filesystem::path file_;
    AppcastItem item_;
    bool isKept_ = false;
};

/// Downloads feeds and packages over HTTP (RFC 9110) on the thread that uses it, which has an event loop.
///
/// It follows redirections only within the scheme, host and port of the first address, and uses plain HTTP
/// only with this machine itself. It has no cookies and no cache.
class UpdateTransfer {
public:
    /// In bytes; the download of a larger feed is cancelled.
    static constexpr std::uint64_t maximumFeed = std::uint64_t{1} << 20;
    /// In bytes; the download of a larger package is not begun.
    static constexpr std::uint64_t maximumPackage = std::uint64_t{1} << 30;

    using Progress = std::function<void(std::uint64_t received, std::uint64_t expected)>;

    /// Downloads go to new folders under `folder`, which is created when needed. removeLeftovers()
    /// removes those of earlier runs.
    UpdateTransfer(Clock& clock, std::filesystem::path folder);
    ~UpdateTransfer();

    /// Downloads a feed and returns its text. Throws UpdateError (feed, cancelled).
    QCoro::Task<std::string> feed(std::string url, std::stop_token stop);

    /// Downloads the item's package and checks its length and its signature by `publicKey`. Throws
    /// UpdateError (download, signature, cancelled), and then leaves no file behind.
    QCoro::Task<std::shared_ptr<DownloadedUpdate>> package(AppcastItem item, std::string publicKey,
                                                           Progress progress, std::stop_token stop);

    /// Removes the downloads of earlier runs from the folder, including those that were kept.
    void removeLeftovers();

private:
    QNetworkAccessManager& manager();

    Clock& clock_;
    std::filesystem::path folder_;
    std::unique_ptr<QNetworkAccessManager> manager_; // made when first needed
    SerialExecutor verifier_;                        // checking a long file would block the main thread
};

} // namespace fernhollow
