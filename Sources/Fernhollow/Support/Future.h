#pragma once

#include "Support/HandOver.h"

#include <QCoreApplication>
#include <QEvent>
#include <QObject>

#include <concepts>
#include <coroutine>
#include <exception>
#include <memory>
#include <optional>
#include <utility>
#include <variant>

namespace fernhollow {

/// The result of work that runs on an EventLoopExecutor, awaited on the thread that asked for it.
///
/// The work runs whether or not it is awaited. A failure that is not awaited is lost, so a caller drops a
/// future only when a failure does not matter. The caller continues on its own thread, from the event loop,
/// or gets there the exception that the work threw. A future is awaited at most once. (A QFuture awaited
/// through QCoro would do the same, but a round trip costs 14 µs of CPU instead of 8, and each press makes
/// one.)
template<class T>
class Future {
public:
    using Stored = std::conditional_t<std::is_void_v<T>, std::monostate, T>;

    struct State {
        std::variant<std::monostate, Stored, std::exception_ptr> result; // written before `done` is seen
        std::coroutine_handle<> waiter;                                  // asking thread only
        bool done = false;                                               // asking thread only
    };

    explicit Future(std::shared_ptr<State> state) : state_(std::move(state)) {}

    bool await_ready() const noexcept { return state_->done; }
    void await_suspend(std::coroutine_handle<> waiter) noexcept { state_->waiter = waiter; }

    T await_resume() {
        if (auto* failure = std::get_if<2>(&state_->result)) {
            std::rethrow_exception(*failure);
        }
        if constexpr (!std::is_void_v<T>) {
            return std::move(std::get<1>(state_->result));
        }
    }

private:
    std::shared_ptr<State> state_;
};

namespace detail {

/// Carries a finished state back to the thread that asked.
class DeliveryEvent : public QEvent {
public:
    DeliveryEvent() : QEvent(type()) {}
    virtual void deliver() = 0;
    static QEvent::Type type();
};

/// Receives the deliveries of the thread that calls this.
std::shared_ptr<QObject> deliveriesOfThisThread();

template<class T>
class Delivery final : public DeliveryEvent {
public:
    explicit Delivery(std::shared_ptr<typename Future<T>::State> state) : state_(std::move(state)) {}

    void deliver() override {
        state_->done = true;
        if (const auto waiter = std::exchange(state_->waiter, nullptr)) {
            waiter.resume();
        }
    }

private:
    std::shared_ptr<typename Future<T>::State> state_;
};

/// Sends a finished state to the thread of `asker`.
template<class T>
void deliver(QObject& asker, std::shared_ptr<typename Future<T>::State> state) {
    auto* delivery = new Delivery<T>(std::move(state));
    handOver(delivery);
    QCoreApplication::postEvent(&asker, delivery);
}

} // namespace detail
} // namespace fernhollow
