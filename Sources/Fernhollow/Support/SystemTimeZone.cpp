#include "Support/SystemTimeZone.h"

#include <cstdlib>
#include <string_view>

namespace fernhollow {

std::unique_ptr<icu::TimeZone> SystemTimeZone::changedZone() {
    if (!update()) {
        return nullptr;
    }
    return std::unique_ptr<icu::TimeZone>(icu::TimeZone::detectHostTimeZone());
}

bool SystemTimeZone::update() {
    const char* variable = std::getenv("TZ");
    struct stat file{};
    ::lstat("/etc/localtime", &file); // a missing file stays all zeros

    if (source_ && (variable == nullptr) == !source_->variable &&
        (variable == nullptr || *source_->variable == variable) && source_->inode == file.st_ino &&
        source_->changed.tv_sec == file.st_ctim.tv_sec && source_->changed.tv_nsec == file.st_ctim.tv_nsec) {
        return false;
    }
    source_ = Source{variable != nullptr ? std::optional<std::string>(variable) : std::nullopt, file.st_ino,
                     file.st_ctim};
    return true;
}

} // namespace fernhollow
