// The facts beside the program: every text is found under its key and is UTF-8, nothing else is, and updates
// that are configured there come over a protected way and not too often.

#include "Fuzz.h"
#include "Support/BundleInfo.h"
#include "Updates/UpdateConfiguration.h"
#include "Updates/WebOrigin.h"

#include <nlohmann/json.hpp>

#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace fernhollow::fuzz {
namespace {

using nlohmann::json;

BundleInfo read(std::string_view text) {
    static const int file = ::memfd_create("fernhollow.json", MFD_CLOEXEC);
    require(::ftruncate(file, 0) == 0 &&
                ::pwrite(file, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()),
            "the file can be written");
    return BundleInfo::read("/proc/self/fd/" + std::to_string(file));
}

} // namespace

void check(std::string_view input) {
    const BundleInfo info = read(input);
    const json facts = json::parse(input, nullptr, false);
    if (facts.is_object()) {
        for (const auto& [key, value] : facts.items()) {
            const auto text = info.string(key);
            require(text.has_value() == value.is_string() && (!text || json(*text) == value),
                    "the texts are found, and nothing else");
            require(!text || isUtf8(*text), "texts are UTF-8");
        }
    }
    if (const auto configuration = readUpdateConfiguration(info)) {
        require(configuration->checkInterval >= std::chrono::hours(1), "checks are an hour apart at least");
        require(isProtectedOnItsWay(QUrl(QString::fromStdString(configuration->feedUrl))),
                "the feed comes over a protected way");
    }
}

} // namespace fernhollow::fuzz
