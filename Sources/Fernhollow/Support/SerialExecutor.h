#pragma once

#include "Support/EventLoopExecutor.h"

#include <QThread>

#include <chrono>
#include <type_traits>
#include <utility>

namespace fernhollow {

/// Runs functions one at a time, in the order in which they came, on one thread of its own.
///
/// The base of an actor that never waits inside its work: what only this executor's work touches needs no
/// lock. Any thread may call run(). The destructor waits for the work that was given. (A pool of one
/// thread would do the same, but costs 11 µs of CPU for each piece of work instead of 8.)
class SerialExecutor {
public:
    SerialExecutor();
    ~SerialExecutor();
    SerialExecutor(const SerialExecutor&) = delete;
    SerialExecutor& operator=(const SerialExecutor&) = delete;

    /// Runs `work` after all earlier work. The Future delivers its result.
    template<class Work>
    Future<std::invoke_result_t<Work&>> run(Work work) {
        static_assert(!detail::ResultOf<std::invoke_result_t<Work&>>::isTask, "a task would let others in");
        return executor_.run(std::move(work));
    }

    /// Blocks until all work given so far is done and the callers that await it on this thread have
    /// continued. False when that takes longer than `limit`.
    bool waitUntilIdle(std::chrono::milliseconds limit);

private:
    QThread thread_;
    EventLoopExecutor executor_;
};

} // namespace fernhollow
