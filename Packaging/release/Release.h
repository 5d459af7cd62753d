#pragma once

#include "Updates/AppcastItem.h"

#include <filesystem>
#include <string>

namespace fernhollow {

class SigningKey;

/// The bytes of a file. Throws std::runtime_error.
std::string readWhole(const std::filesystem::path& file);

/// The arguments of `fernhollow-release feed`.
struct Release {
    AppcastItem item;              ///< without length and signatures
    std::filesystem::path package; ///< the file behind the item's URL
    std::string feedUrl;           ///< the address at which programs read the feed
    std::string publicKey;         ///< the key that programs were built with
};

/// Signs the release and enters it into the feed in `file`, which need not exist. Writes only if a program
/// that was built for this feed would accept the feed and the new entry. Throws std::runtime_error.
void publish(Release release, const SigningKey& key, const std::filesystem::path& file);

} // namespace fernhollow
