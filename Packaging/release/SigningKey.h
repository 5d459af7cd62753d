#pragma once

#include <array>
#include <filesystem>
#include <string>
#include <string_view>

namespace fernhollow {

/// The maker's Ed25519 key pair (RFC 8032). On disk it is the seed of 32 bytes, base64, in a file that its
/// owner alone can read.
class SigningKey {
public:
    /// Makes a key and a new `file` for it; throws std::runtime_error when there is one already.
    static SigningKey create(const std::filesystem::path& file);

    /// Throws std::runtime_error, also when others could have read the file.
    static SigningKey read(const std::filesystem::path& file);

    ~SigningKey();
    SigningKey(const SigningKey&) = default;
    SigningKey& operator=(const SigningKey&) = default;

    /// 32 bytes, base64.
    std::string publicKey() const;

    /// Of `message`: 64 bytes, base64.
    std::string sign(std::string_view message) const;

private:
    static constexpr std::size_t seedSize = 32;
    static constexpr std::size_t publicSize = 32;
    static constexpr std::size_t secretSize = 64;
    using Seed = std::array<unsigned char, seedSize>;

    explicit SigningKey(const Seed& seed);

    std::array<unsigned char, publicSize> public_{};
    std::array<unsigned char, secretSize> secret_{};
};

} // namespace fernhollow
