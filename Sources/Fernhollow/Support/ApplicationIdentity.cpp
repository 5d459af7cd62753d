#include "Support/ApplicationIdentity.h"

#include "Support/BundleInfo.h"

#include <string>

namespace fernhollow {

std::string_view applicationVersion() {
    static const std::string version =
        BundleInfo::main().string("CFBundleShortVersionString").value_or("0.0.0");
    return version;
}

} // namespace fernhollow
