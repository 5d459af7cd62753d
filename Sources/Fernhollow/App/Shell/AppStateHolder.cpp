#include "App/Shell/AppStateHolder.h"

namespace fernhollow {

AppStateHolder& AppStateHolder::shared() {
    // Never destroyed: what exit() still has to do looks here for the model.
    static auto* const holder = new AppStateHolder;
    return *holder;
}

} // namespace fernhollow
