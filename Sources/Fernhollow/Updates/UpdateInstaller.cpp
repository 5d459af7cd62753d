#include "Updates/UpdateInstaller.h"

#include "Support/BundleInfo.h"
#include "Updates/AppImageInstaller.h"
#include "Updates/PackageInstaller.h"
#include "Updates/UpdateError.h"

#include <QStandardPaths>

namespace fernhollow {
namespace {

/// For a program that was built from source, which is updated by building it again.
class SourceInstaller : public UpdateInstaller {
public:
    std::string packageType() const override { return {}; }
    QCoro::Task<Outcome> install(std::shared_ptr<DownloadedUpdate> /*update*/) override {
        throw UpdateError(UpdateError::Reason::install, "This build is updated from its source.");
        co_return Outcome::handedOver; // makes this a coroutine, so that the error is thrown at the co_await
    }
    std::string handOverNote() const override { return {}; }
    void relaunch() override {}
};

} // namespace

std::unique_ptr<UpdateInstaller> makeUpdateInstaller() {
    const std::string publicKey = BundleInfo::main().string("UpdatePublicKey").value_or("");
    if (auto image = findAppImage(executablePath())) {
        return std::make_unique<AppImageInstaller>(std::move(*image), publicKey);
    }
    if (isInPackage(executablePath(), "/var/lib/dpkg/info")) {
        const QString downloads = QStandardPaths::writableLocation(QStandardPaths::DownloadLocation);
        return std::make_unique<PackageInstaller>(
            PackageInstaller::Surroundings{.executable = executablePath(),
                                           .downloads = downloads.toStdString(),
                                           .publicKey = publicKey,
                                           .bus = QDBusConnection::sessionBus()});
    }
    return std::make_unique<SourceInstaller>();
}

} // namespace fernhollow
