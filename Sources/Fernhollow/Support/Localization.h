#pragma once

namespace fernhollow {

/// The languages that the program's introduction speaks.
enum class AppLanguage { english, portuguese };

/// Portuguese when the language that the user prefers is any kind of it, else English.
AppLanguage currentAppLanguage();

} // namespace fernhollow
