#pragma once

#include <cstdint>
#include <string>

namespace fernhollow {

/// One release in an appcast: an `item` of the RSS feed with its `enclosure`. Texts are UTF-8; what the feed
/// leaves out is empty.
struct AppcastItem {
    std::string version;        ///< what is compared, for example "0.2.0"
    std::string displayVersion; ///< what people read: the short version, else `version`
    std::string title;
    std::string releaseNotes;         ///< plain text of the `description`
    std::string link;                 ///< the release's page
    std::string channel;              ///< empty for the channel that everybody gets
    std::string operatingSystem;      ///< "linux", or empty for every system
    std::string packageType;          ///< "appimage" or "deb", or empty for every kind of installation
    std::string minimumSystemVersion; ///< of the kernel
    std::string url;                  ///< of the package, absolute
    std::uint64_t length = 0;         ///< of the package, in bytes
    std::string edSignature;          ///< of the package: Ed25519 (RFC 8032), base64
    /// Of what the feed says about the package, so that an attacker cannot offer an old package as a new one
    /// or other words as the maker's: Ed25519 over signedText(), base64.
    std::string itemSignature;

    bool operator==(const AppcastItem&) const = default;
};

/// What `itemSignature` signs: every field above it but the signature itself, in that order, each as its
/// length in bytes in decimal, a colon, its text and a line feed.
std::string signedText(const AppcastItem& item);

} // namespace fernhollow
