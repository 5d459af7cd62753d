#include "Updates/Appcast.h"

#include <array>
#include <sodium.h>

namespace fernhollow {
namespace {

/// Decodes base64 (RFC 4648, with padding) of exactly `size` bytes.
template<std::size_t size>
bool decode(std::string_view text, std::array<unsigned char, size>& bytes) {
    std::size_t length = 0;
    const char* end = nullptr;
    return sodium_base642bin(bytes.data(), bytes.size(), text.data(), text.size(), nullptr, &length, &end,
                             sodium_base64_VARIANT_ORIGINAL) == 0 &&
           length == size && end == text.data() + text.size();
}

} // namespace

bool isSignedBy(std::string_view publicKey, std::string_view signature, std::string_view message) {
    static const bool isReady = sodium_init() >= 0;
    std::array<unsigned char, crypto_sign_PUBLICKEYBYTES> key{};
    std::array<unsigned char, crypto_sign_BYTES> signatureBytes{};
    return isReady && decode(publicKey, key) && decode(signature, signatureBytes) &&
           crypto_sign_verify_detached(signatureBytes.data(),
                                       reinterpret_cast<const unsigned char*>(message.data()), message.size(),
                                       key.data()) == 0;
}

} // namespace fernhollow
