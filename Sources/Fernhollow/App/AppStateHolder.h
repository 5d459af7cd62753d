#pragma once

#include <memory>

namespace fernhollow {

class AccountManager;
class AppModel;
class Clock;

/// The long-lived objects, for those whom the desktop creates or calls: filled once at start.
struct AppStateHolder {
    std::shared_ptr<AppModel> model;
    std::shared_ptr<AccountManager> account;
    const Clock* clock = nullptr; ///< present while the others are

    static AppStateHolder& shared();
};

} // namespace fernhollow
