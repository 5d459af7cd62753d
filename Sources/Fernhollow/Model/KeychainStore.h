#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace fernhollow::KeychainStore {

/// The user-defaults key of `account`: the application identifier, a dot and `account`.
std::string key(std::string_view account);

std::optional<std::string> readString(std::string_view account);
std::optional<std::string> readData(std::string_view account);

} // namespace fernhollow::KeychainStore
