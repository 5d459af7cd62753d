#include "Updates/Appcast.h"

#include <algorithm>

namespace fernhollow {
namespace {

bool isDigit(char sign) {
    return sign >= '0' && sign <= '9';
}

bool isLetter(char sign) {
    return (sign >= 'a' && sign <= 'z') || (sign >= 'A' && sign <= 'Z');
}

/// Takes the next run of digits or of letters off `version`; empty at its end. It drops leading zeros, so
/// that the longer number is the larger one; zero itself is "0".
std::string_view takePart(std::string_view& version) {
    version.remove_prefix(static_cast<std::size_t>(
        std::ranges::find_if(version, [](char sign) { return isDigit(sign) || isLetter(sign); }) -
        version.begin()));
    if (version.empty()) {
        return {};
    }
    const auto isSame = isDigit(version.front()) ? isDigit : isLetter;
    const auto end = std::ranges::find_if_not(version, isSame);
    std::string_view part = version.substr(0, static_cast<std::size_t>(end - version.begin()));
    version.remove_prefix(part.size());
    if (isDigit(part.front())) {
        part.remove_prefix(std::min(part.find_first_not_of('0'), part.size() - 1));
    }
    return part;
}

// A missing part counts as zero: "1.0" is "1.0.0", and newer than "1.0b1".
std::weak_ordering compareParts(std::string_view left, std::string_view right) {
    left = left.empty() ? "0" : left;
    right = right.empty() ? "0" : right;
    if (isDigit(left.front()) != isDigit(right.front())) {
        return isDigit(left.front()) ? std::weak_ordering::greater : std::weak_ordering::less;
    }
    if (isDigit(left.front()) && left.size() != right.size()) {
        return left.size() <=> right.size();
    }
    return left.compare(right) <=> 0;
}

} // namespace

std::weak_ordering compareVersions(std::string_view left, std::string_view right) {
    for (;;) {
        const std::string_view leftPart = takePart(left);
        const std::string_view rightPart = takePart(right);
        if (leftPart.empty() && rightPart.empty()) {
            return std::weak_ordering::equivalent;
        }
        if (const auto order = compareParts(leftPart, rightPart); order != 0) {
            return order;
        }
    }
}

} // namespace fernhollow
