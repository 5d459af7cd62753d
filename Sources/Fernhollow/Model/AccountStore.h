#pragma once

#include "KeypressCore/DatabaseOpening.h"

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace fernhollow {

class DailyCountsStore;

/// Opens the store of an account. Leaves a file alone that is another account's and takes one with a longer
/// name; sets a file aside that is not a database, under a name that says so and the day `today`. Fills in
/// `opening.owner`. Throws DailyCountsStoreError or std::filesystem::filesystem_error when there is no store
/// for now.
std::shared_ptr<DailyCountsStore> openAccountStore(const std::string& email, DatabaseOpening opening,
                                                   std::string_view today);

/// Sets a file aside that is not a database, or a damaged one. Logs what becomes of it.
void setUnreadableAside(const std::filesystem::path& url, std::string_view today);

} // namespace fernhollow
