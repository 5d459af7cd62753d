#include "Support/ApplicationIdentity.h"

namespace fernhollow {

std::string_view applicationVersion() {
    return FERNHOLLOW_VERSION;
}

} // namespace fernhollow
