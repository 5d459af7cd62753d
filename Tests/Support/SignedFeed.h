#pragma once

#include "AppcastWriter.h"
#include "SigningKey.h"
#include "Updates/Appcast.h"

#include <filesystem>
#include <string>

namespace fernhollow::tests {

/// A maker of releases with a key of its own.
class Maker {
public:
    explicit Maker(const std::filesystem::path& keyFile) : key_(SigningKey::create(keyFile)) {}

    std::string publicKey() const { return key_.publicKey(); }

    /// A release of `package` that everybody gets, signed.
    AppcastItem release(const std::string& version, const std::string& package,
                        const std::string& url) const {
        AppcastItem item;
        item.version = version;
        item.displayVersion = version;
        item.title = "Fernhollow " + version;
        item.releaseNotes = "Better charts.";
        item.operatingSystem = "linux";
        item.packageType = "appimage";
        item.url = url;
        item.length = package.size();
        item.edSignature = key_.sign(package);
        return describe(std::move(item));
    }

    /// Signs what the feed says of it.
    AppcastItem describe(AppcastItem item) const {
        item.itemSignature = key_.sign(signedText(item));
        return item;
    }

private:
    SigningKey key_;
};

} // namespace fernhollow::tests
