#pragma once

#include "Support/Future.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <qcorotask.h>

#include <exception>
#include <optional>
#include <stdexcept>
#include <type_traits>
#include <utility>
#include <variant>

namespace fernhollow::tests {

/// Runs the event loop until `condition` holds; false when it does not within ten seconds.
template<class Condition>
bool waitUntil(Condition condition) {
    const QDeadlineTimer deadline(10'000);
    while (!condition() && !deadline.hasExpired()) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }
    return condition();
}

/// What an awaited operation came to.
template<class T>
struct Outcome {
    std::optional<T> value;
    std::exception_ptr failure;
    bool isDone() const { return value || failure; }
};

template<class T, class Awaitable>
QCoro::Task<> observe(Awaitable& awaitable, Outcome<T>& outcome) {
    try {
        if constexpr (std::is_same_v<T, std::monostate>) {
            co_await awaitable;
            outcome.value.emplace();
        } else {
            outcome.value = co_await awaitable;
        }
    } catch (...) {
        outcome.failure = std::current_exception();
    }
}

template<class T, class Awaitable>
T awaitAs(Awaitable awaitable) {
    using Stored = std::conditional_t<std::is_void_v<T>, std::monostate, T>;
    Outcome<Stored> outcome;
    observe(awaitable, outcome);
    if (!waitUntil([&] { return outcome.isDone(); })) {
        throw std::runtime_error("nothing came of it within ten seconds");
    }
    if (outcome.failure) {
        std::rethrow_exception(outcome.failure);
    }
    if constexpr (!std::is_void_v<T>) {
        return std::move(*outcome.value);
    }
}

/// The result of an operation of the store, or what it throws.
template<class T>
T await(Future<T> future) {
    return awaitAs<T>(std::move(future));
}

inline void await(QCoro::Task<> task) {
    awaitAs<void>(std::move(task));
}

} // namespace fernhollow::tests
