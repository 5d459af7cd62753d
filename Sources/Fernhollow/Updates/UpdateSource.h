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

    /// The newest release that fits; absent when there is none. Throws UpdateError (feed, cancelled).
    virtual QCoro::Task<std::optional<AppcastItem>> newest(std::stop_token stop) = 0;

    /// Downloads the release and checks it. Throws UpdateError (download, signature, cancelled).
    virtual QCoro::Task<std::shared_ptr<DownloadedUpdate>>
    package(AppcastItem item, UpdateTransfer::Progress progress, std::stop_token stop) = 0;

    /// Removes downloads that an earlier run left behind.
    virtual void removeLeftovers() = 0;
};

/// A source that reads an appcast on the web. `version` is that of the running program, `packageType` the
/// kind of packages that it can install (empty for none). Downloads go below `folder`.
std::shared_ptr<UpdateSource> makeAppcastSource(Clock& clock, UpdateConfiguration configuration,
                                                std::string version, std::string packageType,
                                                std::filesystem::path folder);

} // namespace fernhollow
