#pragma once

#include "App/Updates/Question.h"
#include "App/Updates/UpdateWindow.h"
#include "Updates/AppcastItem.h"
#include "Updates/UserDriver.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

/// The pages of the window of updates. `close` hides the window; questions are answered by the page's
/// buttons, and with "later" or not at all when the window is closed.
namespace fernhollow::UpdatePages {

UpdatePage permission(const Question<std::optional<bool>>& question);
UpdatePage checking(std::function<void()> cancel);
UpdatePage found(const AppcastItem& item, const std::string& currentVersion, bool canInstall,
                 const Question<UpdateChoice>& question);
UpdatePage downloading(const AppcastItem& item, std::function<void()> cancel);
UpdatePage ready(const AppcastItem& item, const Question<UpdateChoice>& question);
UpdatePage installing(const AppcastItem& item);
UpdatePage upToDate(const std::string& currentVersion, std::function<void()> close);
UpdatePage error(const std::string& description, std::function<void()> close);
UpdatePage note(const std::string& text, std::function<void()> close);

/// How much of a download has come, in the user's locale, for example "1.5 MB of 12.0 MB".
QString downloadedAmount(std::uint64_t received, std::uint64_t expected);

} // namespace fernhollow::UpdatePages
