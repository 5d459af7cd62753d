#include "Support/DebugLog.h"
#include "Updates/UpdateTransfer.h"

#include <system_error>
#include <utility>

namespace fernhollow {

DownloadedUpdate::DownloadedUpdate(std::filesystem::path folder, std::filesystem::path file, AppcastItem item)
    : folder_(std::move(folder)), file_(std::move(file)), item_(std::move(item)) {}

DownloadedUpdate::~DownloadedUpdate() {
    if (isKept_) {
        return;
    }
    std::error_code error;
    std::filesystem::remove_all(folder_, error);
    if (error) {
        debugLog("[UpdateTransfer] " + folder_.native() + " was not removed: " + error.message());
    }
}

} // namespace fernhollow
