#include "Platform/Applications/Process.h"

#include "Support/FileDescriptor.h"

#include <array>
#include <cstddef>
#include <fcntl.h>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <unistd.h>

namespace fernhollow {
namespace {

// The kernel appends this to the path of a running program whose file was replaced, as updates do.
constexpr std::string_view deletedMark = " (deleted)";

std::string readStart(const std::string& path) {
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    std::array<char, 4096> buffer{};
    const ssize_t size = file ? ::read(file.get(), buffer.data(), buffer.size()) : 0;
    return size > 0 ? std::string(buffer.data(), static_cast<std::size_t>(size)) : std::string();
}

} // namespace

std::optional<Process> readProcess(pid_t pid) {
    if (pid <= 0) {
        return std::nullopt;
    }
    const std::string folder = "/proc/" + std::to_string(pid);
    Process process;
    std::error_code unreadable;
    process.executable = std::filesystem::read_symlink(folder + "/exe", unreadable).native();
    if (process.executable.ends_with(deletedMark)) {
        process.executable.resize(process.executable.size() - deletedMark.size());
    }
    const std::string line = readStart(folder + "/cmdline");
    for (std::size_t begin = 0; begin < line.size();) {
        const std::size_t end = std::min(line.find('\0', begin), line.size());
        process.arguments.emplace_back(line, begin, end - begin);
        begin = end + 1;
    }
    if (process.executable.empty() && process.arguments.empty()) {
        return std::nullopt;
    }
    return process;
}

} // namespace fernhollow
