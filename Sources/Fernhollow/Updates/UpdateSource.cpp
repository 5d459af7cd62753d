#include "Updates/UpdateSource.h"

#include "Updates/Appcast.h"

#include <sys/utsname.h>
#include <utility>

namespace fernhollow {
namespace {

std::string kernelVersion() {
    utsname system{};
    if (::uname(&system) != 0) {
        return {};
    }
    const std::string release = static_cast<const char*>(system.release); // for example "6.1.0-18-amd64"
    return release.substr(0, release.find('-'));
}

class AppcastSource final : public UpdateSource {
public:
    AppcastSource(Clock& clock, UpdateHost host, std::filesystem::path folder)
        : host_(std::move(host)), transfer_(clock, std::move(folder)) {}

    QCoro::Task<std::optional<AppcastItem>> newest(std::stop_token stop) override {
        const std::string feed = co_await transfer_.feed(host_.feedUrl, std::move(stop));
        co_return newestUpdate(parseAppcast(feed), host_);
    }

    QCoro::Task<std::shared_ptr<DownloadedUpdate>>
    package(AppcastItem item, UpdateTransfer::Progress progress, std::stop_token stop) override {
        return transfer_.package(std::move(item), host_.publicKey, std::move(progress), std::move(stop));
    }

    void removeLeftovers() override { transfer_.removeLeftovers(); }

private:
    UpdateHost host_;
    UpdateTransfer transfer_;
};

} // namespace

std::shared_ptr<UpdateSource> makeAppcastSource(Clock& clock, UpdateConfiguration configuration,
                                                std::string version, std::string packageType,
                                                std::filesystem::path folder) {
    return std::make_shared<AppcastSource>(clock,
                                           UpdateHost{.version = std::move(version),
                                                      .systemVersion = kernelVersion(),
                                                      .packageType = std::move(packageType),
                                                      .feedUrl = std::move(configuration.feedUrl),
                                                      .publicKey = std::move(configuration.publicKey)},
                                           std::move(folder));
}

} // namespace fernhollow
