#include "Model/Sync/SyncLog.h"

#include "Support/DebugLog.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace fernhollow {
namespace {

bool isControl(char character) {
    const auto code = static_cast<unsigned char>(character);
    return code < 0x20 || code == 0x7F;
}

} // namespace

void SyncLog::write(std::string_view message) {
    std::string line = "[CloudSync] ";
    std::ranges::replace_copy_if(message, std::back_inserter(line), isControl, ' ');
    debugLog(line);
}

void SyncLog::writeChange(std::string_view topic, const std::string& message, const std::string& content) {
    std::string whole = message + '\n' + content;
    auto& last = last_[std::string(topic)];
    if (last != whole) {
        last = std::move(whole);
        write(message);
    }
}

void SyncLog::clear(std::string_view topic) {
    if (const auto found = last_.find(topic); found != last_.end()) {
        last_.erase(found);
    }
}

} // namespace fernhollow
