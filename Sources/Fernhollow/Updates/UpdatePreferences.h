#pragma once

#include "Support/Clock.h"

#include <optional>
#include <string>

/// What the updater remembers from start to start, in the user defaults. Main thread only.
namespace fernhollow::UpdatePreferences {

/// Whether the person agreed to automatic checks; absent until they were asked.
std::optional<bool> automaticChecks();
void setAutomaticChecks(bool isAllowed);

/// How often the program was started; counted until the person was asked.
int starts();
void setStarts(int starts);

/// When a check last began, to the second.
std::optional<Instant> lastCheck();
void setLastCheck(Instant instant);

/// The release that the person does not want to hear of again.
std::optional<std::string> skippedVersion();
void setSkippedVersion(const std::string& version);

/// The release that a desktop notification told of, which tells of each only once.
std::optional<std::string> announcedVersion();
void setAnnouncedVersion(const std::string& version);

} // namespace fernhollow::UpdatePreferences
