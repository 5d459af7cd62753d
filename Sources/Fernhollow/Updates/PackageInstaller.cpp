#include "Updates/PackageInstaller.h"

#include "Support/DebugLog.h"
#include "Support/SerialExecutor.h"
#include "Updates/Appcast.h"
#include "Updates/DetachedProcess.h"
#include "Updates/FolderPresentation.h"
#include "Updates/PackageKit.h"
#include "Updates/UpdateError.h"
#include "Updates/UpdateTransfer.h"
#include "Updates/VerifiedCopy.h"

#include <algorithm>
#include <fstream>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <utility>

namespace fernhollow {
namespace fs = std::filesystem;
namespace {

constexpr std::string_view packageName = "fernhollow";

/// Distinguishes a file from another that has taken its name.
struct FileIdentity {
    dev_t device = 0;
    ino_t number = 0;

    explicit FileIdentity(const fs::path& path) {
        struct stat status{};
        if (::stat(path.c_str(), &status) == 0) {
            device = status.st_dev;
            number = status.st_ino;
        }
    }
    bool operator==(const FileIdentity&) const = default;
};

bool lists(const fs::path& list, const std::string& path) {
    std::ifstream stream(list);
    for (std::string line; std::getline(stream, line);) {
        if (line == path) {
            return true;
        }
    }
    return false;
}

// A signed version may contain any character; a file name must not.
std::string fileName(const AppcastItem& item) {
    constexpr std::string_view harmless =
        "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz.+-~";
    std::string version = item.version;
    std::ranges::replace_if(version, [&](char c) { return harmless.find(c) == std::string_view::npos; }, '_');
    return std::string(packageName) + "_" + version.substr(0, 64) + ".deb";
}

} // namespace

struct PackageInstaller::State {
    explicit State(Surroundings surroundings)
        : around(std::move(surroundings)), executable(around.executable) {}

    /// Returns a file that the person can find: a copy among their downloads, else the downloaded file
    /// itself.
    static QCoro::Task<fs::path> placeForPerson(std::shared_ptr<State> self,
                                                std::shared_ptr<DownloadedUpdate> update);
    static QCoro::Task<Outcome> install(std::shared_ptr<State> self,
                                        std::shared_ptr<DownloadedUpdate> update);

    const Surroundings around;
    const FileIdentity executable; // the file that is running
    std::string note;
    SerialExecutor executor;
};

QCoro::Task<fs::path> PackageInstaller::State::placeForPerson(std::shared_ptr<State> self,
                                                              std::shared_ptr<DownloadedUpdate> update) {
    const fs::path target = self->around.downloads / fileName(update->item());
    try {
        co_await self->executor.run([update, target, key = self->around.publicKey] {
            constexpr mode_t mode =
                S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH; // an installer may run as another user
            placeVerifiedCopy(update->file(), target, mode, [&](std::string_view bytes) {
                return isSignedBy(key, update->item().edSignature, bytes);
            });
        });
        co_return target;
    } catch (const UpdateError& error) {
        debugLog(std::string("[PackageInstaller] ") + error.what());
    }
    update->keep();
    co_return update->file();
}

QCoro::Task<UpdateInstaller::Outcome>
PackageInstaller::State::install(std::shared_ptr<State> self, std::shared_ptr<DownloadedUpdate> update) {
    self->note.clear();
    if (co_await installWithPackageKit(self->around.bus, update->file())) {
        // Some installers answer when they have finished, others as soon as their window is open.
        if (FileIdentity(self->around.executable) != self->executable) {
            co_return Outcome::relaunch;
        }
        update->keep();
        self->note =
            "Finish the update in the window of your software installer, then start Fernhollow again.";
        co_return Outcome::handedOver;
    }
    const fs::path file = co_await placeForPerson(self, update);
    co_await showInFolder(self->around.bus, file);
    self->note = "Open " + file.filename().native() + " in " + file.parent_path().native() +
                 " with your software installer to finish the update.";
    co_return Outcome::handedOver;
}

bool isInPackage(const fs::path& executable, const fs::path& info) {
    return lists(info / (std::string(packageName) + ".list"), executable.native());
}

PackageInstaller::PackageInstaller(Surroundings surroundings)
    : state_(std::make_shared<State>(std::move(surroundings))) {}

PackageInstaller::~PackageInstaller() = default;

QCoro::Task<UpdateInstaller::Outcome> PackageInstaller::install(std::shared_ptr<DownloadedUpdate> update) {
    return State::install(state_, std::move(update));
}

std::string PackageInstaller::handOverNote() const {
    return state_->note;
}

void PackageInstaller::relaunch() {
    try {
        startAfterThisProcess(state_->around.executable, currentEnvironment());
    } catch (const std::system_error& error) {
        debugLog(std::string("[PackageInstaller] The new program cannot be started: ") + error.what());
    }
}

} // namespace fernhollow
