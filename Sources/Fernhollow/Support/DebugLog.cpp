#include "Support/DebugLog.h"

#include "Support/FileDescriptor.h"
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

// O_NONBLOCK: if a pipe stands in the log's place, we do not wait for its reader.
bool appendToExisting(const std::string& path, std::string_view line) {
    const FileDescriptor file(::open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (file) {
        writeAll(file, line);
    }
    return static_cast<bool>(file);
}

// A finished file takes the name by link(), which unlike rename() never replaces one that came first. On a
// file system without links the file is created under its own name: a reader may see it empty for a
// moment.
bool createWhole(const std::string& path, std::string_view line) {
    std::string temporary = path + ".XXXXXX";
    FileDescriptor file(::mkostemp(temporary.data(), O_CLOEXEC)); // made with mode 0600
    if (!file) {
        return false;
    }
    writeAll(file, line);
    file.close();
    const bool isLinked = ::link(temporary.c_str(), path.c_str()) == 0;
    const bool isTaken = !isLinked && errno == EEXIST;
    ::unlink(temporary.c_str());
    if (isLinked || isTaken) {
        return isLinked;
    }
    file = FileDescriptor(::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (file) {
        writeAll(file, line);
    }
    return static_cast<bool>(file);
}

bool isControl(unsigned char character) {
    return (character < 0x20 && character != '\n' && character != '\t') || character == 0x7F;
}

// Some programs also break lines at U+0085, U+2028 and U+2029.
std::size_t lengthOfForeignBreak(std::string_view text) {
    if (text.starts_with("\xC2\x85")) {
        return 2;
    }
    return text.starts_with("\xE2\x80\xA8") || text.starts_with("\xE2\x80\xA9") ? 3 : 0;
}

void appendEscaped(std::string& line, std::string_view characters) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    for (const char character : characters) {
        const auto code = static_cast<unsigned char>(character);
        line.append("\\x").append({digits[code >> 4U], digits[code & 15U]});
    }
}

// Parts of a message may come from a server, another program or a file. None of its lines may look like an
// entry, and none may control the terminal that shows the log.
void appendMessage(std::string& line, std::string_view message) {
    for (std::size_t at = 0; at < message.size(); ++at) {
        const std::string_view rest = message.substr(at);
        if (rest.starts_with("\n[")) {
            line.append("\\n");
        } else if (const std::size_t length = lengthOfForeignBreak(rest); length > 0) {
            appendEscaped(line, rest.substr(0, length));
            at += length - 1;
        } else if (isControl(static_cast<unsigned char>(rest.front()))) {
            appendEscaped(line, rest.substr(0, 1));
        } else {
            line.push_back(rest.front());
        }
    }
}

} // namespace

void debugLog(std::string_view message) {
    const std::string path = homeDirectory().native() + "/fernhollow_debug.log";
    std::string line = "[" + internetTime(std::chrono::system_clock::now()) + "] ";
    appendMessage(line, message);
    line.push_back('\n');

    if (appendToExisting(path, line) || errno != ENOENT) {
        return;
    }
    if (!createWhole(path, line)) {
        appendToExisting(path, line); // another thread or process created it meanwhile
    }
}

} // namespace fernhollow
