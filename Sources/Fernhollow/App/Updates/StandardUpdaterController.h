#pragma once

#include "Updates/UpdaterController.h"

#include <memory>

namespace fernhollow {

class Clock;
class StandardUserDriver;
class Updater;

/// The updater of the running program, with its configuration, its installer and the standard windows.
class StandardUpdaterController final : public UpdaterController {
public:
    StandardUpdaterController(Clock& clock, UpdaterDelegate& delegate,
                              UserDriverDelegate& userDriverDelegate);
    ~StandardUpdaterController() override;

    void checkForUpdates() override;
    bool canCheckForUpdates() const override;
    Observation observeCanCheckForUpdates(std::function<void()> willChange) override;

private:
    std::shared_ptr<StandardUserDriver> driver_;
    std::shared_ptr<Updater> updater_;
};

} // namespace fernhollow
