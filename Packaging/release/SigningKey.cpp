#include "SigningKey.h"

#include <cerrno>
#include <fcntl.h>
#include <fstream>
#include <sodium.h>
#include <stdexcept>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace fernhollow {
namespace fs = std::filesystem;
namespace {

void initialise() {
    if (::sodium_init() < 0) {
        throw std::runtime_error("libsodium cannot be initialised");
    }
}

template<class Bytes>
std::string base64(const Bytes& bytes) {
    std::string text(sodium_base64_encoded_len(bytes.size(), sodium_base64_VARIANT_ORIGINAL), '\0');
    ::sodium_bin2base64(text.data(), text.size(), bytes.data(), bytes.size(), sodium_base64_VARIANT_ORIGINAL);
    text.pop_back(); // libsodium's size includes the terminator
    return text;
}

std::runtime_error failure(const fs::path& file) {
    return std::runtime_error(file.native() + ": " + std::generic_category().message(errno));
}

} // namespace

SigningKey::SigningKey(const Seed& seed) {
    static_assert(seedSize == crypto_sign_SEEDBYTES && publicSize == crypto_sign_PUBLICKEYBYTES &&
                  secretSize == crypto_sign_SECRETKEYBYTES);
    ::crypto_sign_seed_keypair(public_.data(), secret_.data(), seed.data());
}

SigningKey::~SigningKey() {
    ::sodium_memzero(secret_.data(), secret_.size());
}

SigningKey SigningKey::create(const fs::path& file) {
    initialise();
    Seed seed{};
    ::randombytes_buf(seed.data(), seed.size());
    const std::string line = base64(seed) + "\n";
    const int descriptor = ::open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (descriptor < 0) {
        throw failure(file);
    }
    const bool isWritten =
        ::write(descriptor, line.data(), line.size()) == static_cast<ssize_t>(line.size()) &&
        ::fsync(descriptor) == 0;
    ::close(descriptor);
    if (!isWritten) {
        const auto error = failure(file);
        ::unlink(file.c_str());
        throw error;
    }
    return SigningKey(seed);
}

SigningKey SigningKey::read(const fs::path& file) {
    initialise();
    struct stat status{};
    if (::stat(file.c_str(), &status) != 0) {
        throw failure(file);
    }
    if ((status.st_mode & (S_IRWXG | S_IRWXO)) != 0) {
        throw std::runtime_error(file.native() + ": others can read this key (chmod 600, or make a new one)");
    }
    std::string line;
    std::ifstream stream(file);
    std::getline(stream, line);
    Seed seed{};
    std::size_t size = 0;
    const char* end = nullptr;
    if (::sodium_base642bin(seed.data(), seed.size(), line.data(), line.size(), nullptr, &size, &end,
                            sodium_base64_VARIANT_ORIGINAL) != 0 ||
        size != seed.size() || end != line.data() + line.size()) {
        throw std::runtime_error(file.native() + ": not a key that fernhollow-release made");
    }
    return SigningKey(seed);
}

std::string SigningKey::publicKey() const {
    return base64(public_);
}

std::string SigningKey::sign(std::string_view message) const {
    std::array<unsigned char, crypto_sign_BYTES> signature{};
    ::crypto_sign_detached(
        signature.data(), nullptr,
        reinterpret_cast<const unsigned char*>(message.data()), // NOLINT: what libsodium takes
        message.size(), secret_.data());
    return base64(signature);
}

} // namespace fernhollow
