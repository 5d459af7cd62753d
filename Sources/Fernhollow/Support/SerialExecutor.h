#pragma once

#include "Support/Future.h"

#include <QRunnable>
#include <QThreadPool>

#include <chrono>
#include <type_traits>

namespace fernhollow {

/// Runs work one piece at a time, in the order in which it came, on one thread of its own.
///
/// What an actor of this program stands on: whatever only this executor's work touches needs no
/// lock. Its destructor waits for the work that it was given.
class SerialExecutor {
public:
    SerialExecutor();
    ~SerialExecutor();
    SerialExecutor(const SerialExecutor&) = delete;
    SerialExecutor& operator=(const SerialExecutor&) = delete;

    /// Starts `work` after all earlier work; see Future for what becomes of its result.
    template<class Work>
    Future<std::invoke_result_t<Work&>> run(Work work) {
        using Result = std::invoke_result_t<Work&>;
        auto state = std::make_shared<typename Future<Result>::State>();
        auto* piece =
            new Piece<Work, Result>(*this, std::move(work), state, detail::deliveriesOfThisThread());
        detail::handOver(piece);
        pool_.start(piece);
        return Future<Result>(std::move(state));
    }

    /// Blocks until everything asked for so far is done, and lets those of this thread who await it go
    /// on; false when that takes longer than `limit`.
    bool waitUntilIdle(std::chrono::milliseconds limit);

private:
    template<class Work, class Result>
    class Piece final : public QRunnable {
    public:
        Piece(SerialExecutor& executor, Work work, std::shared_ptr<typename Future<Result>::State> state,
              std::shared_ptr<QObject> asker)
            : executor_(executor), work_(std::move(work)), state_(std::move(state)),
              asker_(std::move(asker)) {}

        void run() override {
            detail::takeOver(this);
            try {
                if constexpr (std::is_void_v<Result>) {
                    work_();
                    state_->result.template emplace<1>();
                } else {
                    state_->result.template emplace<1>(work_());
                }
            } catch (...) {
                state_->result.template emplace<2>(std::current_exception());
            }
            detail::handOver(&executor_); // to those who wait until it is idle
            detail::deliver<Result>(*asker_, std::move(state_));
        }

    private:
        SerialExecutor& executor_;
        Work work_;
        std::shared_ptr<typename Future<Result>::State> state_;
        std::shared_ptr<QObject> asker_;
    };

    QThreadPool pool_;
};

} // namespace fernhollow
