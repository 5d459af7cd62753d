#include "Model/Sync/WireRecords.h"

#include <nlohmann/json.hpp>

#include <charconv>
#include <limits>
#include <stdexcept>

namespace fernhollow::wire {
namespace {

using nlohmann::json;

// Answers are arrays of objects; a much deeper one would only cost memory.
constexpr int maximumDepth = 8;

struct NotTheRecord : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The library could tell while it parses, but then takes a time that grows with the square of the rows.
bool isNestedTooDeeply(std::string_view body) {
    int depth = 0;
    bool isInText = false;
    for (std::size_t i = 0; i < body.size(); ++i) {
        const char sign = body[i];
        if (isInText) {
            i += sign == '\\' ? 1 : 0;
            isInText = sign != '"';
        } else if (sign == '"') {
            isInText = true;
        } else if (sign == '[' || sign == '{') {
            if (++depth > maximumDepth) {
                return true;
            }
        } else if (sign == ']' || sign == '}') {
            --depth;
        }
    }
    return false;
}

json parse(std::string_view body) {
    if (isNestedTooDeeply(body)) {
        throw NotTheRecord("nested too deeply");
    }
    return json::parse(body);
}

std::optional<std::int64_t> integer(const json& value) {
    constexpr auto maximum = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    if (!value.is_number_integer() || (value.is_number_unsigned() && value.get<std::uint64_t>() > maximum)) {
        return std::nullopt;
    }
    return value.get<std::int64_t>();
}

const json& field(const json& record, const char* key) {
    const auto found = record.find(key);
    if (found == record.end()) {
        throw NotTheRecord(key);
    }
    return *found;
}

std::int64_t requiredInteger(const json& record, const char* key) {
    const auto value = integer(field(record, key));
    if (!value) {
        throw NotTheRecord(key);
    }
    return *value;
}

std::string requiredText(const json& record, const char* key) {
    const json& value = field(record, key);
    if (!value.is_string()) {
        throw NotTheRecord(key);
    }
    return value.get<std::string>();
}

int requiredHour(const json& record) {
    const auto hour = requiredInteger(record, "hour");
    if (hour < std::numeric_limits<int>::min() || hour > std::numeric_limits<int>::max()) {
        throw NotTheRecord("hour");
    }
    return static_cast<int>(hour);
}

std::int64_t parsed(std::string_view text) {
    if (text.size() > 1 && text.front() == '+' && text[1] != '-') {
        text.remove_prefix(1);
    }
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size() ? value : 0;
}

// Some hosts send sums as texts, because they can be larger than what every client reads exactly.
std::int64_t totalCount(const json& record) {
    const auto found = record.find("total_count");
    if (found == record.end()) {
        return 0;
    }
    if (const auto value = integer(*found)) {
        return *value;
    }
    return found->is_string() ? parsed(found->get_ref<const std::string&>()) : 0;
}

template<class Record>
std::optional<std::vector<Record>> decode(std::string_view body, Record (*record)(const json&)) {
    try {
        const json array = parse(body);
        if (!array.is_array()) {
            return std::nullopt;
        }
        std::vector<Record> records;
        records.reserve(array.size());
        for (const json& element : array) {
            if (!element.is_object()) {
                return std::nullopt;
            }
            records.push_back(record(element));
        }
        return records;
    } catch (const json::exception&) {
        return std::nullopt;
    } catch (const NotTheRecord&) {
        return std::nullopt;
    }
}

} // namespace

std::optional<std::int64_t> decodeTotal(std::string_view body) {
    try {
        return integer(parse(body));
    } catch (const json::exception&) {
        return std::nullopt;
    } catch (const NotTheRecord&) {
        return std::nullopt;
    }
}

std::optional<std::vector<DeviceCount>> decodeDeviceCounts(std::string_view body) {
    return decode<DeviceCount>(body,
                               [](const json& row) { return DeviceCount{requiredInteger(row, "count")}; });
}

std::optional<std::vector<RemoteDaily>> decodeDaily(std::string_view body) {
    return decode<RemoteDaily>(
        body, [](const json& row) { return RemoteDaily{requiredText(row, "day"), totalCount(row)}; });
}

std::optional<std::vector<RemoteHour>> decodeHours(std::string_view body) {
    return decode<RemoteHour>(body,
                              [](const json& row) { return RemoteHour{requiredHour(row), totalCount(row)}; });
}

std::optional<std::vector<RemoteAppHour>> decodeAppHours(std::string_view body) {
    return decode<RemoteAppHour>(body, [](const json& row) {
        return RemoteAppHour{requiredHour(row), requiredText(row, "bundle_id"), requiredText(row, "app_name"),
                             totalCount(row)};
    });
}

std::optional<std::vector<RemoteAppDaily>> decodeAppDaily(std::string_view body) {
    return decode<RemoteAppDaily>(body, [](const json& row) {
        return RemoteAppDaily{requiredText(row, "day"), requiredText(row, "bundle_id"),
                              requiredText(row, "app_name"), totalCount(row)};
    });
}

std::optional<std::vector<DeviceInfo>> decodeDevices(std::string_view body) {
    return decode<DeviceInfo>(body, [](const json& row) {
        return DeviceInfo{requiredText(row, "device_id"), requiredText(row, "device_name"),
                          requiredText(row, "last_seen_at")};
    });
}

} // namespace fernhollow::wire
