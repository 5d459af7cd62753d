#pragma once

#include <coroutine>
#include <memory>
#include <optional>
#include <utility>

namespace fernhollow {

/// Something that a person is asked: a coroutine awaits it, a window answers it. Copies are the same
/// question. The first answer counts; the coroutine goes on before answer() returns. One thread only.
template<class T>
class Question {
public:
    void answer(T value) const {
        if (state_->answer) {
            return;
        }
        state_->answer.emplace(std::move(value)); // which may be an absent one
        if (const auto waiter = std::exchange(state_->waiter, nullptr)) {
            waiter.resume();
        }
    }

    bool await_ready() const noexcept { return state_->answer.has_value(); }
    void await_suspend(std::coroutine_handle<> waiter) const noexcept { state_->waiter = waiter; }
    T await_resume() const { return *state_->answer; }

private:
    struct State {
        std::optional<T> answer{};
        std::coroutine_handle<> waiter{};
    };

    std::shared_ptr<State> state_ = std::make_shared<State>();
};

} // namespace fernhollow
