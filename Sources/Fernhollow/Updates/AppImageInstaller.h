#pragma once

#include "Support/SerialExecutor.h"
#include "Updates/UpdateInstaller.h"

#include <filesystem>
#include <optional>

namespace fernhollow {

/// A program in one file, as its runtime describes it in the variables APPIMAGE and APPDIR.
struct AppImage {
    std::filesystem::path file;   ///< the user's own regular file, not a symbolic link
    std::filesystem::path appDir; ///< where its contents are mounted or unpacked
};

/// The AppImage from which `executable` runs; absent when it runs from elsewhere, or when this user may not
/// replace the file.
std::optional<AppImage> findAppImage(const std::filesystem::path& executable);

/// Replaces the file of an AppImage by the new one. Main thread only; it copies on a thread of its own.
class AppImageInstaller : public UpdateInstaller {
public:
    AppImageInstaller(AppImage image, std::string publicKey);

    std::string packageType() const override { return "appimage"; }
    QCoro::Task<Outcome> install(std::shared_ptr<DownloadedUpdate> update) override;
    std::string handOverNote() const override { return {}; }
    void relaunch() override;

private:
    AppImage image_;
    std::string publicKey_;
    SerialExecutor executor_;
};

} // namespace fernhollow
