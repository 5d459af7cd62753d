#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace fernhollow {

/// The facts about this build that are told beside it: the information dictionary, a JSON object of texts in
/// the file "fernhollow.json" in the folder of the executable, written at build time.
class BundleInfo {
public:
    /// That of the running program, read once. What cannot be read is logged and taken for empty.
    static const BundleInfo& main();

    static BundleInfo read(const std::filesystem::path& file);

    /// The text under `key`; absent when the key or a text value is missing.
    std::optional<std::string> string(const std::string& key) const;

private:
    std::map<std::string, std::string> texts_;
};

/// The absolute path of the running program's file, as it was when this was first asked.
const std::filesystem::path& executablePath();

} // namespace fernhollow
