#include "Support/FileDescriptor.h"

#include <cerrno>
#include <cstddef>
#include <unistd.h>

namespace fernhollow {

bool FileDescriptor::close() {
    return descriptor_ < 0 || ::close(release()) == 0;
}

bool writeAll(const FileDescriptor& file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(file.get(), bytes.data(), bytes.size());
        if (written > 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
        } else if (written == 0 || errno != EINTR) {
            return false;
        }
    }
    return true;
}

} // namespace fernhollow
