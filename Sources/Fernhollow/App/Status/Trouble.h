#pragma once

#include <QString>

#include <functional>
#include <memory>

namespace fernhollow {

class AppModel;
class CountingState;

/// What a person should know of the counting now, and the button that changes it.
struct Trouble {
    QString sentence{};              ///< empty when all is well
    QString button{};                ///< what the button says; empty where the program can do nothing
    std::function<void()> perform{}; ///< what it does
    bool isHalted = false;           ///< no press is counted

    /// The most important one: what is not counted is lost, what is not saved could be, what is not sent
    /// waits.
    static Trouble now(const std::shared_ptr<AppModel>& model, const CountingState& counting);
};

} // namespace fernhollow
