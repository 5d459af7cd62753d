#include "Updates/UpdateTransfer.h"

#include "Support/Clock.h"
#include "Support/DebugLog.h"
#include "Support/FileDescriptor.h"
#include "Support/HttpManners.h"
#include "Support/UserDirectories.h"
#include "Updates/Appcast.h"
#include "Updates/Fetch.h"
#include "Updates/UpdateError.h"

#include <QFile>
#include <QNetworkAccessManager>

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace fernhollow {
namespace fs = std::filesystem;
namespace {

constexpr std::string_view folderPrefix = "download-";
constexpr std::string_view folderPattern = "XXXXXX";

// Not the feed's or the server's name, which may contain a path or mislead a person who finds the file.
std::string fileName(const AppcastItem& item) {
    return item.packageType == "deb" ? "fernhollow.deb" : "Fernhollow.AppImage";
}

[[noreturn]] void failToWrite(const fs::path& path, int error) {
    throw UpdateError(UpdateError::Reason::download, "The update could not be written to " + path.native() +
                                                         ": " + std::generic_category().message(error) + ".");
}

/// The folder for downloads: a real folder of the user's own that no other user can write to.
void ensureFolder(const fs::path& folder) {
    try {
        createPrivateDirectories(folder);
    } catch (const fs::filesystem_error& error) {
        failToWrite(folder, error.code().value());
    }
    struct stat status{};
    if (::lstat(folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode) || status.st_uid != ::geteuid() ||
        (status.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        throw UpdateError(UpdateError::Reason::download,
                          folder.native() +
                              " is not a folder of yours alone, so nothing is downloaded to it.");
    }
}

void ensureSpace(const fs::path& folder, std::uint64_t length) {
    std::error_code error; // if the space is unknown, the write itself fails
    const auto space = fs::space(folder, error);
    if (!error && space.available < length) {
        failToWrite(folder, ENOSPC);
    }
}

std::shared_ptr<DownloadedUpdate> makeDownload(const fs::path& folder, AppcastItem item) {
    std::string path = (folder / folderPrefix).native() + std::string(folderPattern);
    if (::mkdtemp(path.data()) == nullptr) {
        failToWrite(folder, errno);
    }
    const fs::path file = fs::path(path) / fileName(item);
    return std::make_shared<DownloadedUpdate>(path, file, std::move(item));
}

class FeedReceiver final : public BodyReceiver {
public:
    void begin(std::optional<std::uint64_t> length) override { check(length.value_or(0)); }

    void take(std::string_view bytes) override {
        check(body.size() + bytes.size());
        body += bytes;
    }

    std::string body;

private:
    static void check(std::uint64_t length) {
        if (length > UpdateTransfer::maximumFeed) {
            throw UpdateError(UpdateError::Reason::feed, "The update feed is too long.");
        }
    }
};

class FileReceiver final : public BodyReceiver {
public:
    FileReceiver(const fs::path& file, std::uint64_t expected, UpdateTransfer::Progress progress)
        : path_(file), expected_(expected), progress_(std::move(progress)),
          file_(
              ::open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR)) {
        if (!file_) {
            failToWrite(path_, errno);
        }
    }

    void begin(std::optional<std::uint64_t> length) override {
        if (length.value_or(expected_) != expected_) {
            failLength();
        }
    }

    void take(std::string_view bytes) override {
        if (bytes.size() > expected_ - received_) {
            failLength();
        }
        received_ += bytes.size();
        if (!writeAll(file_, bytes)) {
            failToWrite(path_, errno);
        }
        progress_(received_, expected_);
    }

    void end() {
        if (received_ != expected_) {
            failLength();
        }
        if (!file_.close()) {
            failToWrite(path_, errno);
        }
    }

private:
    [[noreturn]] static void failLength() {
        throw UpdateError(UpdateError::Reason::download, "The update is not as long as the feed says.");
    }

    fs::path path_;
    std::uint64_t expected_;
    UpdateTransfer::Progress progress_;
    FileDescriptor file_;
    std::uint64_t received_ = 0;
};

// Ed25519 reads the whole message twice, so the file is mapped and not copied to memory.
bool isGenuine(const fs::path& path, const std::string& publicKey, const std::string& signature) {
    QFile file(QString::fromStdString(path.native()));
    if (!file.open(QIODevice::ReadOnly)) {
        return false;
    }
    const uchar* bytes = file.map(0, file.size());
    return bytes != nullptr &&
           isSignedBy(publicKey, signature,
                      {reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(file.size())});
}

bool isLeftover(const fs::directory_entry& entry) {
    const std::string name = entry.path().filename().native();
    std::error_code error;
    return name.starts_with(folderPrefix) && name.size() == folderPrefix.size() + folderPattern.size() &&
           fs::is_directory(entry.symlink_status(error));
}

} // namespace

UpdateTransfer::UpdateTransfer(Clock& clock, fs::path folder) : clock_(clock), folder_(std::move(folder)) {}

UpdateTransfer::~UpdateTransfer() = default;

QNetworkAccessManager& UpdateTransfer::manager() {
    if (!manager_) {
        manager_ = makeNetworkAccess();
    }
    return *manager_;
}

QCoro::Task<std::string> UpdateTransfer::feed(std::string url, std::stop_token stop) {
    FeedReceiver receiver;
    co_await fetch(manager(), clock_, QUrl(QString::fromStdString(url), QUrl::StrictMode),
                   UpdateError::Reason::feed, receiver, std::move(stop));
    co_return std::move(receiver.body);
}

QCoro::Task<std::shared_ptr<DownloadedUpdate>>
UpdateTransfer::package(AppcastItem item, std::string publicKey, Progress progress, std::stop_token stop) {
    if (item.length == 0 || item.length > maximumPackage) {
        throw UpdateError(UpdateError::Reason::download, "The update's length is missing or impossible.");
    }
    ensureFolder(folder_);
    ensureSpace(folder_, item.length);
    auto update = makeDownload(folder_, item);
    FileReceiver receiver(update->file(), item.length, std::move(progress));
    co_await fetch(manager(), clock_, QUrl(QString::fromStdString(item.url), QUrl::StrictMode),
                   UpdateError::Reason::download, receiver, std::move(stop));
    receiver.end();
    const bool isMakers = co_await verifier_.run(
        [file = update->file(), publicKey = std::move(publicKey), signature = item.edSignature] {
            return isGenuine(file, publicKey, signature);
        });
    if (!isMakers) {
        throw UpdateError(UpdateError::Reason::signature,
                          "The update is not what Fernhollow's maker signed, so it was deleted.");
    }
    co_return update;
}

void UpdateTransfer::removeLeftovers() {
    std::error_code error; // the folder is missing when nothing was ever downloaded
    for (fs::directory_iterator entry(folder_, error), end; !error && entry != end; entry.increment(error)) {
        std::error_code failure;
        if (isLeftover(*entry) && fs::remove_all(entry->path(), failure) == static_cast<std::uintmax_t>(-1)) {
            debugLog("[UpdateTransfer] " + entry->path().native() + " was not removed: " + failure.message());
        }
    }
}

} // namespace fernhollow
