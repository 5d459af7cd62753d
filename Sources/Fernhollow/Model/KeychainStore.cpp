#include "Model/KeychainStore.h"

#include "Platform/UserDefaults.h"
#include "Support/ApplicationIdentity.h"

namespace fernhollow::KeychainStore {

std::string key(std::string_view account) {
    return std::string(applicationIdentifier).append(".").append(account);
}

std::optional<std::string> readString(std::string_view account) {
    return UserDefaults::string(key(account));
}

std::optional<std::string> readData(std::string_view account) {
    return UserDefaults::data(key(account));
}

} // namespace fernhollow::KeychainStore
