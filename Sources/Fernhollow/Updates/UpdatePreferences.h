#pragma once

#include "Support/Clock.h"

#include <optional>
#include <string>

/// What the updater keeps in the user defaults from start to start. Main thread only.
namespace fernhollow::UpdatePreferences {

/// Whether the person agreed to automatic checks; absent until they have answered.
std::optional<bool> automaticChecks();
void setAutomaticChecks(bool isAllowed);

/// How often the program was started; counted until the person has answered.
int starts();
void setStarts(int starts);

/// When a check last began, to the second.
std::optional<Instant> lastCheck();
void setLastCheck(Instant instant);

/// The release that the person does not want to hear of again.
std::optional<std::string> skippedVersion();
void setSkippedVersion(const std::string& version);

/// The release that a notification last announced; each is announced only once.
std::optional<std::string> announcedVersion();
void setAnnouncedVersion(const std::string& version);

} // namespace fernhollow::UpdatePreferences
