#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace fernhollow {

/// The facts about this build that are told beside it: the information dictionary, a JSON object of texts in the
/// file "fernhollow.json" in the folder of the executable, written at build time.
class BundleInfo {
public:
    /// That of the running program, read once. What cannot be read is logged and taken for empty.
    static const BundleInfo& main();

    static BundleInfo read(const std::filesystem::path& file);

    /// The text under `key`; absent when the key or a text value is missing.
    std::optional<std::string> string(const std::string& key) const;
};

} // namespace fernhollow
