#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace fernhollow {

/// The information dictionary of this build: a JSON object of texts in the file "fernhollow.json", which the
/// build writes to the folder of the executable.
class BundleInfo {
public:
    /// The running program's dictionary, read once.
    static const BundleInfo& main();

    /// The dictionary in `file`; empty, with a line in the log, when it cannot be read.
    static BundleInfo read(const std::filesystem::path& file);

    /// The text under `key`; absent when the key or a text value is missing.
    std::optional<std::string> string(const std::string& key) const;

private:
    std::map<std::string, std::string> texts_;
};

/// The absolute path of the running program's file, as it was at the first call.
const std::filesystem::path& executablePath();

} // namespace fernhollow
