#include "Support/Localization.h"

#include "Support/UserLocale.h"

namespace fernhollow {

AppLanguage currentAppLanguage() {
    return preferredLanguage().starts_with("pt") ? AppLanguage::portuguese : AppLanguage::english;
}

} // namespace fernhollow
