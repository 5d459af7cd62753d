#pragma once

#include "SigningKey.h"
#include "Support/Testing.h"
#include "Updates/UpdateError.h"
#include "Updates/UpdateInstaller.h"
#include "Updates/UpdateTransfer.h"

#include <filesystem>
#include <fstream>
#include <set>
#include <string>

namespace fernhollow::tests {

inline void write(const std::filesystem::path& file, const std::string& text) {
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << text;
}

inline std::set<std::string> namesIn(const std::filesystem::path& folder) {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        names.insert(entry.path().filename().native());
    }
    return names;
}

/// A home with a downloaded package in it, signed by a key of its own.
class InstallerTest : public testing::Test {
protected:
    std::shared_ptr<DownloadedUpdate> download(const std::string& bytes,
                                               const std::string& version = "0.2.0") {
        AppcastItem item;
        item.version = version;
        item.length = bytes.size();
        item.edSignature = key_.sign(bytes);
        write(downloaded_, bytes);
        return std::make_shared<DownloadedUpdate>(downloaded_.parent_path(), downloaded_, item);
    }

    static UpdateInstaller::Outcome install(UpdateInstaller& installer,
                                            std::shared_ptr<DownloadedUpdate> update) {
        return awaitAs<UpdateInstaller::Outcome>(installer.install(std::move(update)));
    }

    /// What the installation throws, as "reason: sentence".
    static std::string failure(UpdateInstaller& installer, std::shared_ptr<DownloadedUpdate> update) {
        try {
            install(installer, std::move(update));
        } catch (const UpdateError& error) {
            return (error.reason() == UpdateError::Reason::cancelled ? "cancelled: " : "install: ") +
                   std::string(error.what());
        }
        return "none";
    }

    const TemporaryHome home_;
    const SigningKey key_ = SigningKey::create(home_.path() / "key");
    const std::filesystem::path downloaded_ = home_.path() / "cache/update-1/package";
};

} // namespace fernhollow::tests
