#include "Updates/DetachedProcess.h"

#include "Support/FileDescriptor.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <string_view>
#include <system_error>
#include <unistd.h>

namespace fernhollow {
namespace fs = std::filesystem;
namespace {

void check(int error) {
    if (error != 0) {
        throw std::system_error(error, std::generic_category());
    }
}

class FileActions {
public:
    explicit FileActions(int input) {
        check(::posix_spawn_file_actions_init(&actions_));
        if (input >= 0) {
            ::posix_spawn_file_actions_adddup2(&actions_, input, STDIN_FILENO);
        } else {
            ::posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        }
        // The runtime of an AppImage keeps its mount while any process holds a certain pipe, or has its
        // working folder in the mount.
        ::posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
        ::posix_spawn_file_actions_addchdir_np(&actions_, "/");
    }
    ~FileActions() { ::posix_spawn_file_actions_destroy(&actions_); }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;

    const posix_spawn_file_actions_t* get() const { return &actions_; }

private:
    posix_spawn_file_actions_t actions_{};
};

class Attributes {
public:
    Attributes() {
        check(::posix_spawnattr_init(&attributes_));
        sigset_t signals;
        sigemptyset(&signals); // this program blocks the signals that end it
        ::posix_spawnattr_setsigmask(&attributes_, &signals);
        sigfillset(&signals);
        ::posix_spawnattr_setsigdefault(&attributes_, &signals);
        ::posix_spawnattr_setflags(&attributes_,
                                   POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSID);
    }
    ~Attributes() { ::posix_spawnattr_destroy(&attributes_); }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;

    const posix_spawnattr_t* get() const { return &attributes_; }

private:
    posix_spawnattr_t attributes_{};
};

std::vector<char*> pointers(const std::vector<std::string>& texts) {
    std::vector<char*> result;
    result.reserve(texts.size() + 1);
    for (const std::string& text : texts) {
        result.push_back(const_cast<char*>(text.c_str())); // posix_spawn does not change it
    }
    result.push_back(nullptr);
    return result;
}

void spawn(const std::vector<std::string>& command, const Environment& environment, int input) {
    const FileActions actions(input);
    const Attributes attributes;
    const auto arguments = pointers(command);
    const auto variables = pointers(environment);
    pid_t process = 0;
    check(::posix_spawn(&process, command.front().c_str(), actions.get(), attributes.get(), arguments.data(),
                        variables.data()));
}

bool isBelow(std::string_view path, const std::string& folder) {
    return path == folder || path.starts_with(folder + "/");
}

/// `list`, separated by colons, without the entries below `folder`.
std::string withoutFolder(std::string_view list, const std::string& folder) {
    std::string kept;
    for (bool isFirst = true; !list.empty() || isFirst; isFirst = false) {
        const auto end = std::min(list.find(':'), list.size());
        if (const auto part = list.substr(0, end); !isBelow(part, folder)) {
            kept.append(kept.empty() ? "" : ":").append(part);
        }
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return kept;
}

} // namespace

Environment currentEnvironment() {
    Environment result;
    for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable) {
        result.emplace_back(*variable);
    }
    return result;
}

Environment outsideAppImage(const Environment& environment, const fs::path& appDir) {
    constexpr std::array<std::string_view, 4> own{"APPIMAGE", "APPDIR", "ARGV0", "OWD"};
    Environment result;
    for (const std::string& variable : environment) {
        const auto equals = variable.find('=');
        const std::string_view name = std::string_view(variable).substr(0, equals);
        if (equals == std::string::npos || std::ranges::find(own, name) != own.end()) {
            continue;
        }
        if (variable.find(appDir.native(), equals) == std::string::npos) {
            result.push_back(variable);
            continue;
        }
        if (const auto kept = withoutFolder(std::string_view(variable).substr(equals + 1), appDir.native());
            !kept.empty()) {
            result.push_back(std::string(name).append("=").append(kept));
        }
    }
    return result;
}

void startDetached(const std::vector<std::string>& command, const Environment& environment) {
    spawn(command, environment, -1);
}

void startAfterThisProcess(const fs::path& program, const Environment& environment) {
    static bool isArranged = false;
    if (isArranged) {
        return;
    }
    // Our end of the pipe stays open until this process ends and the system closes it. The shell sees that
    // at once.
    std::array<int, 2> ends{};
    check(::pipe2(ends.data(), O_CLOEXEC) == 0 ? 0 : errno);
    const FileDescriptor childs(ends[0]);
    FileDescriptor ours(ends[1]);
    spawn({"/bin/sh", "-c", R"(read -r _; exec "$0" </dev/null)", program.native()}, environment,
          childs.get());
    ours.release();
    isArranged = true;
}

} // namespace fernhollow
