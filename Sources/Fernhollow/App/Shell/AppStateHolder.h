#pragma once

#include <memory>

namespace fernhollow {

class AccountManager;
class AppModel;
class Clock;
class CountingState;
class UpdateManager;

/// The long-lived objects, for those whom the desktop creates or calls: filled once at start.
struct AppStateHolder {
    std::shared_ptr<AppModel> model;
    std::shared_ptr<AccountManager> account;
    std::shared_ptr<UpdateManager> updateManager;
    std::shared_ptr<CountingState> counting;
    const Clock* clock = nullptr; ///< present while the others are

    bool isFilled() const { return model && account && updateManager && counting; }

    static AppStateHolder& shared();
};

} // namespace fernhollow
