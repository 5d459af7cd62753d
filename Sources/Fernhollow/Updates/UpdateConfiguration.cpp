#include "Updates/UpdateConfiguration.h"

#include "Support/BundleInfo.h"
#include "Support/DebugLog.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string_view>

namespace fernhollow {
namespace {

using namespace std::chrono_literals;

constexpr qsizetype publicKeySize = 32;

// Every installed program asks the feed, so a mistake in the build's settings must not flood its server.
constexpr std::chrono::seconds shortestInterval = 1h;
constexpr std::chrono::seconds longestInterval = std::chrono::days{365}; // far from an overflow

bool isLoopback(const QString& host) {
    return host == u"localhost" || host == u"127.0.0.1" || host == u"::1";
}

bool isFeedAddress(const std::string& text) {
    const QUrl url(QString::fromStdString(text), QUrl::StrictMode);
    if (!url.isValid() || url.host().isEmpty() || !url.userInfo().isEmpty() || url.hasFragment()) {
        return false;
    }
    return url.scheme() == u"https" || (url.scheme() == u"http" && isLoopback(url.host()));
}

bool isPublicKey(const std::string& text) {
    const auto decoded = QByteArray::fromBase64Encoding(QByteArray::fromStdString(text),
                                                        QByteArray::AbortOnBase64DecodingErrors);
    return decoded && decoded.decoded.size() == publicKeySize;
}

std::optional<std::chrono::seconds> parseSeconds(std::string_view text) {
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) {
        return std::nullopt;
    }
    return std::chrono::seconds(value);
}

std::nullopt_t refuse(const std::string& reason) {
    debugLog("[UpdateConfiguration] " + reason + "; checks for updates are off");
    return std::nullopt;
}

} // namespace

std::optional<UpdateConfiguration> readUpdateConfiguration(const BundleInfo& info) {
    const auto feed = info.string("UpdateFeedURL");
    if (!feed || feed->empty()) {
        return refuse("This build has no feed");
    }
    if (!isFeedAddress(*feed)) {
        return refuse("The feed is not at an HTTPS address: " + *feed);
    }
    const auto key = info.string("UpdatePublicKey");
    if (!key || !isPublicKey(*key)) {
        return refuse("The public key is not 32 bytes in base64");
    }
    UpdateConfiguration configuration{.feedUrl = *feed, .publicKey = *key};
    if (const auto text = info.string("UpdateCheckInterval")) {
        const auto interval = parseSeconds(*text);
        if (!interval) {
            return refuse("The interval is not a number of seconds: " + *text);
        }
        configuration.checkInterval = std::clamp(*interval, shortestInterval, longestInterval);
        if (configuration.checkInterval != *interval) {
            debugLog("[UpdateConfiguration] An interval of " + *text +
                     " s is not between an hour and a year");
        }
    }
    return configuration;
}

std::optional<UpdateConfiguration> readUpdateConfiguration() {
    return readUpdateConfiguration(BundleInfo::main());
}

} // namespace fernhollow
