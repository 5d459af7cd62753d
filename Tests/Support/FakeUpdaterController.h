#pragma once

#include "Model/UpdateManager.h"

namespace fernhollow::tests {

/// An updater that does what a test tells it.
struct FakeUpdaterController final : UpdaterController, Observable {
    FakeUpdaterController(UpdaterDelegate& updaterDelegate, UserDriverDelegate& driverDelegate)
        : delegate(updaterDelegate), userDriverDelegate(driverDelegate) {}

    void checkForUpdates() override { ++checks; }
    bool canCheckForUpdates() const override { return canCheck.get(); }
    Observation observeCanCheckForUpdates(std::function<void()> willChange) override {
        return canCheck.observe(std::move(willChange));
    }

    UpdaterDelegate& delegate;
    UserDriverDelegate& userDriverDelegate;
    Published<bool> canCheck{*this};
    int checks = 0;
};

/// A manager over such an updater, which outlives neither.
struct FakelyUpdated {
    FakeUpdaterController* updater = nullptr;
    std::shared_ptr<UpdateManager> manager = std::make_shared<UpdateManager>(
        [this](UpdaterDelegate& delegate, UserDriverDelegate& userDriverDelegate) {
            auto made = std::make_unique<FakeUpdaterController>(delegate, userDriverDelegate);
            updater = made.get();
            return made;
        });
};

} // namespace fernhollow::tests
