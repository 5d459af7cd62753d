#pragma once

#include "Updates/UpdateConfiguration.h"
#include "Updates/UpdateTransfer.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>

namespace fernhollow {

/// Where an updater learns of releases and gets them from.
class UpdateSource {
public:
    virtual ~UpdateSource() = default;

    /// The newest release that fits, absent when there is none. Throws UpdateError (feed, cancelled).
    virtual QCoro::Task<std::optional<AppcastItem>> newest(std::stop_token stop) = 0;

    /// Downloads the release and checks it. Throws UpdateError (download, signature, cancelled).
    virtual QCoro::Task<std::shared_ptr<DownloadedUpdate>>
    package(AppcastItem item, UpdateTransfer::Progress progress, std::stop_token stop) = 0;

    /// Removes what an earlier run left behind.
    virtual void removeLeftovers() = 0;
};

/// An appcast on the web, for the running program as `version` with packages of `packageType` (empty where
/// nothing is installed). Downloads go below `folder`.
std::shared_ptr<UpdateSource> makeAppcastSource(Clock& clock, UpdateConfiguration configuration,
                                                std::string version, std::string packageType,
                                                std::filesystem::path folder);

} // namespace fernhollow
