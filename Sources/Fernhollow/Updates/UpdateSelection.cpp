#include "Updates/Appcast.h"
#include "Updates/UpdateError.h"
#include "Updates/UpdateTransfer.h"
#include "Updates/WebOrigin.h"

namespace fernhollow {
namespace {

constexpr std::size_t signatureLength = 88; // 64 bytes as base64

bool fits(const AppcastItem& item, const UpdateHost& host) {
    return item.channel.empty() && (item.operatingSystem.empty() || item.operatingSystem == "linux") &&
           (host.packageType.empty() || item.packageType.empty() || item.packageType == host.packageType) &&
           compareVersions(item.minimumSystemVersion, host.systemVersion) <= 0 &&
           compareVersions(item.version, host.version) > 0;
}

[[noreturn]] void refuse(const std::string& description) {
    throw UpdateError(UpdateError::Reason::feed, description);
}

void check(const AppcastItem& item, const UpdateHost& host) {
    if (!isSignedBy(host.publicKey, item.itemSignature, signedText(item))) {
        refuse("The update's description is not signed by Fernhollow's maker.");
    }
    const QUrl url(QString::fromStdString(item.url), QUrl::StrictMode);
    const QUrl feed(QString::fromStdString(host.feedUrl), QUrl::StrictMode);
    if (!isProtectedOnItsWay(url) || !isSameOrigin(url, feed)) {
        refuse("The update is in another place than the feed: " + item.url);
    }
    if (item.edSignature.size() != signatureLength) {
        refuse("The update is not signed.");
    }
    if (item.length == 0 || item.length > UpdateTransfer::maximumPackage) {
        refuse("The update's length is missing or impossible.");
    }
}

} // namespace

// When the newest release is not signed, that is an error even if an older one is signed: the feed was
// tampered with, and the person should learn of it.
std::optional<AppcastItem> newestUpdate(const std::vector<AppcastItem>& items, const UpdateHost& host) {
    const AppcastItem* newest = nullptr;
    for (const AppcastItem& item : items) {
        if (fits(item, host) && (newest == nullptr || compareVersions(item.version, newest->version) > 0)) {
            newest = &item;
        }
    }
    if (newest == nullptr) {
        return std::nullopt;
    }
    check(*newest, host);
    return *newest;
}

} // namespace fernhollow
