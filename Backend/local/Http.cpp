#include "local/Http.h"

#include "local/ApiError.h"

#include <charconv>
#include <optional>

namespace fernhollow::backend {

namespace {

std::optional<char> hexByte(std::string_view digits) {
    unsigned value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
    if (error != std::errc() || digits.size() != 2 || end != digits.data() + digits.size() || value == 0) {
        return std::nullopt;
    }
    return static_cast<char>(value);
}

std::string decode(std::string_view text) {
    std::string decoded;
    decoded.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '+') {
            decoded += ' ';
        } else if (text[i] == '%') {
            const auto byte = hexByte(text.substr(i + 1, 2));
            if (!byte) {
                throw ApiError::badQuery("failed to decode the query", "unexpected percent-encoding");
            }
            decoded += *byte;
            i += 2;
        } else {
            decoded += text[i];
        }
    }
    return decoded;
}

std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

/// Calls `take` with each part between separators.
template<typename Take>
void forEachPart(std::string_view text, char separator, Take take) {
    while (!text.empty()) {
        const auto end = text.find(separator);
        take(text.substr(0, end));
        text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
    }
}

} // namespace

NamedValues parseQuery(std::string_view query) {
    NamedValues values;
    forEachPart(query, '&', [&](std::string_view item) {
        if (!item.empty()) {
            const auto equals = item.find('=');
            const auto value =
                equals == std::string_view::npos ? std::string_view() : item.substr(equals + 1);
            values.emplace_back(decode(item.substr(0, equals)), decode(value));
        }
    });
    return values;
}

std::vector<std::string> valuesOf(const NamedValues& values, std::string_view name) {
    std::vector<std::string> found;
    for (const auto& [key, value] : values) {
        if (key == name) {
            found.push_back(value);
        }
    }
    return found;
}

std::vector<std::string> splitList(std::string_view list) {
    std::vector<std::string> parts;
    forEachPart(list, ',', [&](std::string_view part) {
        if (const auto name = trimmed(part); !name.empty()) {
            parts.emplace_back(name);
        }
    });
    return parts;
}

} // namespace fernhollow::backend
