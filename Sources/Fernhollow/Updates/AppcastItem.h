#pragma once

#include <cstdint>
#include <string>

namespace fernhollow {

/// One release in an appcast: an `item` of the RSS feed with its `enclosure`. Texts are UTF-8; a text that
/// the feed leaves out is empty.
struct AppcastItem {
    std::string version;        ///< for comparison, for example "0.2.0"
    std::string displayVersion; ///< for people: the short version, else `version`
    std::string title;
    std::string releaseNotes;         ///< plain text of the `description`
    std::string link;                 ///< the release's page
    std::string channel;              ///< empty for a release that is offered to every machine
    std::string operatingSystem;      ///< "linux", or empty for every system
    std::string packageType;          ///< "appimage" or "deb", or empty for every kind of installation
    std::string minimumSystemVersion; ///< of the kernel
    std::string url;                  ///< of the package, absolute
    std::uint64_t length = 0;         ///< of the package, in bytes
    std::string edSignature;          ///< of the package: Ed25519 (RFC 8032), base64
    /// Ed25519 over signedText(), base64. It covers what the feed says about the package, so that an
    /// attacker cannot offer an old package as a new one, or other notes as the maker's.
    std::string itemSignature;

    bool operator==(const AppcastItem&) const = default;
};

/// The text that `itemSignature` signs: all fields but the two signatures, in their order, each as
/// its length in bytes (decimal), a colon, its text and a line feed.
std::string signedText(const AppcastItem& item);

} // namespace fernhollow
