#pragma once

namespace fernhollow {

/// The languages of the program's introduction.
enum class AppLanguage { english, portuguese };

/// Portuguese when the user's preferred language is any variety of it, else English.
AppLanguage currentAppLanguage();

} // namespace fernhollow
