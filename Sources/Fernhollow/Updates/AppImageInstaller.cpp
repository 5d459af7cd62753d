#include "Updates/AppImageInstaller.h"

#include "Support/DebugLog.h"
#include "Updates/Appcast.h"
#include "Updates/DetachedProcess.h"
#include "Updates/UpdateError.h"
#include "Updates/UpdateTransfer.h"
#include "Updates/VerifiedCopy.h"

#include <algorithm>
#include <cstdlib>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace fernhollow {
namespace fs = std::filesystem;
namespace {

fs::path pathIn(const char* variable) {
    const char* value = std::getenv(variable);
    std::error_code error;
    return value != nullptr && *value == '/' ? fs::canonical(value, error) : fs::path();
}

bool isBelow(const fs::path& path, const fs::path& folder) {
    const auto [left, right] = std::mismatch(folder.begin(), folder.end(), path.begin(), path.end());
    return left == folder.end() && right != path.end();
}

mode_t modeFor(const fs::path& replaced) {
    struct stat status{};
    const mode_t permissions = S_IRWXU | S_IRWXG | S_IRWXO;
    return (::stat(replaced.c_str(), &status) == 0 ? status.st_mode & permissions : S_IRUSR | S_IWUSR) |
           S_IXUSR;
}

} // namespace

std::optional<AppImage> findAppImage(const fs::path& executable) {
    AppImage image{.file = pathIn("APPIMAGE"), .appDir = pathIn("APPDIR")};
    // A program that was started from another AppImage inherits that one's variables.
    if (image.file.empty() || image.appDir.empty() || !isBelow(executable, image.appDir)) {
        return std::nullopt;
    }
    struct stat status{};
    if (::stat(image.file.c_str(), &status) != 0 || !S_ISREG(status.st_mode) ||
        status.st_uid != ::geteuid()) {
        debugLog("[AppImageInstaller] " + image.file.native() + " is not this user's file to replace");
        return std::nullopt;
    }
    return image;
}

AppImageInstaller::AppImageInstaller(AppImage image, std::string publicKey)
    : image_(std::move(image)), publicKey_(std::move(publicKey)) {}

QCoro::Task<UpdateInstaller::Outcome> AppImageInstaller::install(std::shared_ptr<DownloadedUpdate> update) {
    debugLog("[AppImageInstaller] Replacing " + image_.file.native());
    co_await executor_.run([update, file = image_.file, key = publicKey_] {
        placeVerifiedCopy(update->file(), file, modeFor(file), [&](std::string_view bytes) {
            return isSignedBy(key, update->item().edSignature, bytes);
        });
    });
    co_return Outcome::relaunch;
}

void AppImageInstaller::relaunch() {
    try {
        startAfterThisProcess(image_.file, outsideAppImage(currentEnvironment(), image_.appDir));
    } catch (const std::system_error& error) {
        debugLog(std::string("[AppImageInstaller] The new program cannot be started: ") + error.what());
    }
}

} // namespace fernhollow
