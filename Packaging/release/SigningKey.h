#pragma once

#include <array>
#include <filesystem>
#include <string>
#include <string_view>

namespace fernhollow {

/// The maker's Ed25519 key pair (RFC 8032). On disk it is the seed of 32 bytes, in base64, in a file that
/// only its owner can read.
class SigningKey {
public:
    /// Makes a key and saves it in a new `file`. Throws std::runtime_error, also when the file exists.
    static SigningKey create(const std::filesystem::path& file);

    /// Reads the key in `file`. Throws std::runtime_error, also when other users could have read the file.
    static SigningKey read(const std::filesystem::path& file);

    ~SigningKey();
    SigningKey(const SigningKey&) = default;
    SigningKey& operator=(const SigningKey&) = default;

    /// The public key: 32 bytes, in base64.
    std::string publicKey() const;

    /// The signature of `message`: 64 bytes, in base64.
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
