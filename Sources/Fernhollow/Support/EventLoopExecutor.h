#pragma once

#include "Support/Future.h"

#include <QEvent>
#include <QObject>
#include <qcorotask.h>

#include <cstddef>
#include <memory>
#include <type_traits>
#include <utility>

namespace fernhollow {

namespace detail {

/// A piece of work on its way to the thread that is to do it.
class WorkEvent : public QEvent {
public:
    WorkEvent() : QEvent(type()) {}
    virtual QCoro::Task<> work() = 0;
    static QEvent::Type type();
};

template<class T>
struct ResultOf {
    using Type = T;
    static constexpr bool isTask = false;
};
template<class T>
struct ResultOf<QCoro::Task<T>> {
    using Type = T;
    static constexpr bool isTask = true;
};

} // namespace detail

/// Runs functions and coroutines on the event loop of one thread, and begins them in the order in which they
/// came.
///
/// The base of an actor that waits for the network. What only this executor's work touches needs no
/// lock, but coroutines interleave where they wait. Any thread may call run() and post(). The executor
/// lives, and is destroyed, on the thread that runs the work.
class EventLoopExecutor : public QObject {
public:
    /// Queues `work`, which returns a value or a task. The Future delivers its result.
    template<class Work>
    auto run(Work work) {
        using Result = typename detail::ResultOf<std::invoke_result_t<Work&>>::Type;
        auto state = std::make_shared<typename Future<Result>::State>();
        Future<Result> future(state);
        post(Piece<Work, Result>(std::move(work), std::move(state), detail::deliveriesOfThisThread()));
        return future;
    }

    /// Queues `work`, whose result no caller awaits. An exception that escapes from it goes to the debug log.
    template<class Work>
    void post(Work work) {
        auto* event = new Event<Work>(std::move(work));
        detail::handOver(event);
        QCoreApplication::postEvent(this, event);
    }

    /// How many pieces of work have begun here and not ended. Only for this executor's own thread.
    std::size_t underWay() const { return underWay_; }

protected:
    bool event(QEvent* event) override;

private:
    template<class Work, class Result = typename detail::ResultOf<std::invoke_result_t<Work&>>::Type>
    static QCoro::Task<Result> invoke(Work work) {
        if constexpr (detail::ResultOf<std::invoke_result_t<Work&>>::isTask) {
            co_return co_await work();
        } else {
            co_return work();
        }
    }

    template<class Work>
    class Event final : public detail::WorkEvent {
    public:
        explicit Event(Work work) : work_(std::move(work)) {}
        QCoro::Task<> work() override { return invoke(std::move(work_)); }

    private:
        Work work_;
    };

    // Work whose result, or exception, goes back to the thread that asked.
    template<class Work, class Result>
    class Piece {
    public:
        Piece(Work work, std::shared_ptr<typename Future<Result>::State> state,
              std::shared_ptr<QObject> asker)
            : work_(std::move(work)), state_(std::move(state)), asker_(std::move(asker)) {}

        QCoro::Task<> operator()() { return carry(std::move(work_), std::move(state_), std::move(asker_)); }

    private:
        static QCoro::Task<> carry(Work work, std::shared_ptr<typename Future<Result>::State> state,
                                   std::shared_ptr<QObject> asker) {
            try {
                if constexpr (std::is_void_v<Result>) {
                    co_await invoke(std::move(work));
                    state->result.template emplace<1>();
                } else {
                    state->result.template emplace<1>(co_await invoke(std::move(work)));
                }
            } catch (...) {
                state->result.template emplace<2>(std::current_exception());
            }
            detail::deliver<Result>(*asker, std::move(state));
        }

        Work work_;
        std::shared_ptr<typename Future<Result>::State> state_;
        std::shared_ptr<QObject> asker_;
    };

    static QCoro::Task<> watch(EventLoopExecutor* self, QCoro::Task<> task);

    std::size_t underWay_ = 0;
};

} // namespace fernhollow
