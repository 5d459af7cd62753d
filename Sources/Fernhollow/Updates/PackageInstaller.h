#pragma once

#include "Updates/UpdateInstaller.h"

#include <QDBusConnection>

#include <filesystem>

namespace fernhollow {

/// Whether `executable` belongs to our Debian package, by its list of files in dpkg's folder `info`.
bool isInPackage(const std::filesystem::path& executable, const std::filesystem::path& info);

/// Hands a Debian package to PackageKit's session service, which asks the person for the rights that this
/// program lacks. Without that service it puts the package into the person's folder for downloads and shows
/// it there. Main thread only.
class PackageInstaller : public UpdateInstaller {
public:
    struct Surroundings {
        std::filesystem::path executable; ///< what the package replaces
        std::filesystem::path downloads;  ///< the person's folder
        std::string publicKey;
        QDBusConnection bus; ///< the session bus
    };

    explicit PackageInstaller(Surroundings surroundings);
    ~PackageInstaller() override;

    std::string packageType() const override { return "deb"; }
    QCoro::Task<Outcome> install(std::shared_ptr<DownloadedUpdate> update) override;
    std::string handOverNote() const override;
    void relaunch() override;

private:
    struct State;
    std::shared_ptr<State> state_; // shared with an installation under way
};

} // namespace fernhollow
