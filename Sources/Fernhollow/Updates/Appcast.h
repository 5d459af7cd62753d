#pragma once

#include "Updates/AppcastItem.h"

#include <compare>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace fernhollow {

/// The running program and its machine, which a release has to fit.
struct UpdateHost {
    std::string version;       ///< of the running program
    std::string systemVersion; ///< of the kernel, for example "6.1.0"
    std::string packageType;   ///< "appimage", "deb", or empty where nothing can be installed
    std::string feedUrl;       ///< packages may only come from its scheme, host and port
    std::string publicKey;     ///< Ed25519, base64
};

/// The releases of an RSS 2.0 feed, in the feed's order, without items that lack a version or an
/// enclosure. Throws UpdateError (feed), also when the feed declares entities.
std::vector<AppcastItem> parseAppcast(std::string_view xml);

/// Orders versions by their parts: "1.2" < "1.10", "1.0b1" < "1.0", "1.0" == "1.0.0".
std::weak_ordering compareVersions(std::string_view left, std::string_view right);

/// The newest release that is newer than the running program, fits this machine and is on no channel; absent
/// when there is none. An attacker may write the feed, so it throws UpdateError (feed) when that release is
/// not signed or its package comes from another place.
std::optional<AppcastItem> newestUpdate(const std::vector<AppcastItem>& items, const UpdateHost& host);

/// Whether `signature` (base64, 64 bytes) is `publicKey`'s (base64, 32 bytes) under `message`: Ed25519, RFC
/// 8032. False also for texts that are not a key or not a signature.
bool isSignedBy(std::string_view publicKey, std::string_view signature, std::string_view message);

} // namespace fernhollow
