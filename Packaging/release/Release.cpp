#include "Release.h"

#include "AppcastWriter.h"
#include "SigningKey.h"
#include "Updates/Appcast.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <vector>

namespace fernhollow {
namespace fs = std::filesystem;
namespace {

void sign(Release& release, const SigningKey& key) {
    const std::string package = readWhole(release.package);
    release.item.length = package.size();
    release.item.edSignature = key.sign(package);
    release.item.itemSignature = key.sign(signedText(release.item));
}

/// A machine that the release fits, with a program that is older than every release.
UpdateHost olderHost(const Release& release) {
    return {.version = "0",
            .systemVersion = release.item.minimumSystemVersion,
            .packageType = release.item.packageType,
            .feedUrl = release.feedUrl,
            .publicKey = release.publicKey};
}

void checkAsProgramsDo(const Release& release, const std::string& feed,
                       const std::vector<AppcastItem>& items) {
    const auto read = parseAppcast(feed);
    if (read != items) {
        throw std::runtime_error("the feed would not be read back as it was written");
    }
    // No program asks for a channel yet, so for an entry on a channel only the signature is checked.
    AppcastItem entry = read.front();
    if (!isSignedBy(release.publicKey, entry.itemSignature, signedText(entry))) {
        throw std::runtime_error("the programs were built with another public key");
    }
    if (!entry.channel.empty()) {
        return;
    }
    if (!newestUpdate({entry}, olderHost(release))) {
        throw std::runtime_error("no program would take this release");
    }
    if (!newestUpdate(read, olderHost(release))) {
        throw std::runtime_error("the feed would offer nothing");
    }
}

} // namespace

std::string readWhole(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(stream), {}};
    if (!stream.is_open() || stream.bad()) {
        throw std::runtime_error(file.native() + ": " + std::generic_category().message(errno));
    }
    return bytes;
}

void publish(Release release, const SigningKey& key, const fs::path& file) {
    sign(release, key);
    const auto known = fs::exists(file) ? parseAppcast(readWhole(file)) : std::vector<AppcastItem>();
    const auto items = withRelease(known, release.item);
    const std::string feed = writeAppcast(items);
    checkAsProgramsDo(release, feed, items);
    replaceContents(file, feed);
}

} // namespace fernhollow
