#include "Support/DebugLog.h"

#include "Support/InternetTime.h"
#include "Support/UserDirectories.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace fernhollow {
namespace {

void writeAll(int file, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(file, text.data(), text.size());
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return;
        }
        text.remove_prefix(static_cast<std::size_t>(written));
    }
}

// O_NONBLOCK: should somebody put a pipe in the log's place, nobody waits for its reader.
bool appendToExisting(const std::string& path, std::string_view line) {
    const int file = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (file < 0) {
        return false;
    }
    writeAll(file, line);
    ::close(file);
    return true;
}

// A finished file takes the name by link(), which unlike rename() never replaces one that came first.
bool createWhole(const std::string& path, std::string_view line) {
    std::string temporary = path + ".XXXXXX";
    const int file = ::mkostemp(temporary.data(), O_CLOEXEC); // made with mode 0600
    if (file < 0) {
        return false;
    }
    writeAll(file, line);
    ::close(file);
    const bool created = ::link(temporary.c_str(), path.c_str()) == 0;
    ::unlink(temporary.c_str());
    return created;
}

} // namespace

void debugLog(std::string_view message) {
    const std::string path = homeDirectory().native() + "/fernhollow_debug.log";
    std::string line = "[" + internetTime(std::chrono::system_clock::now()) + "] ";
    line.append(message).push_back('\n');

    if (appendToExisting(path, line) || errno != ENOENT) {
        return;
    }
    if (!createWhole(path, line)) {
        appendToExisting(path, line); // another thread or process created it meanwhile
    }
}

} // namespace fernhollow
