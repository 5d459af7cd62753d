#pragma once

#include "Updates/AppcastItem.h"

#include <filesystem>
#include <string>

namespace fernhollow {

class SigningKey;

/// The bytes of a file. Throws std::runtime_error.
std::string readWhole(const std::filesystem::path& file);

/// What `fernhollow-release feed` is told about a release.
struct Release {
    AppcastItem item;              ///< without length and signatures
    std::filesystem::path package; ///< the file behind the item's URL
    std::string feedUrl;           ///< where programs will read the feed
    std::string publicKey;         ///< that programs were built with
};

/// Signs the release and enters it into the feed in `file`, which may be missing yet. Nothing is written
/// unless a program that was built for this feed would take the new entry, and the feed as a whole, from it.
/// Throws std::runtime_error.
void publish(Release release, const SigningKey& key, const std::filesystem::path& file);

} // namespace fernhollow
