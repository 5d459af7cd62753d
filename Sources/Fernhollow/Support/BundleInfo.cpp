#include "Support/BundleInfo.h"

#include "Support/DebugLog.h"

#include <nlohmann/json.hpp>

#include <cerrno>
#include <fstream>
#include <system_error>

namespace fernhollow {
namespace fs = std::filesystem;

const BundleInfo& BundleInfo::main() {
    static const BundleInfo info = read(executablePath().parent_path() / "fernhollow.json");
    return info;
}

BundleInfo BundleInfo::read(const fs::path& file) {
    BundleInfo info;
    std::ifstream stream(file);
    if (!stream) {
        debugLog("[BundleInfo] Cannot read " + file.native() + ": " + std::generic_category().message(errno));
        return info;
    }
    const auto json = nlohmann::json::parse(stream, nullptr, false);
    if (!json.is_object()) {
        debugLog("[BundleInfo] " + file.native() + " is not a JSON object");
        return info;
    }
    for (const auto& [key, value] : json.items()) {
        if (value.is_string()) {
            info.texts_.emplace(key, value.get<std::string>());
        }
    }
    return info;
}

std::optional<std::string> BundleInfo::string(const std::string& key) const {
    const auto found = texts_.find(key);
    return found != texts_.end() ? std::optional(found->second) : std::nullopt;
}

const fs::path& executablePath() {
    // Read once, because after an update has replaced the file the kernel reports another name.
    static const fs::path path = [] {
        std::error_code error;
        return fs::read_symlink("/proc/self/exe", error);
    }();
    return path;
}

} // namespace fernhollow
