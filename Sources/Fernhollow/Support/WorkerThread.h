#pragma once

#include "Support/EventLoopExecutor.h"

#include <QThread>

#include <chrono>
#include <functional>
#include <memory>

namespace fernhollow {

/// A thread with an event loop of its own, whose coroutines come to their end before it does.
///
/// Created and ended by the main thread; destroying it waits for them. The owner of coroutines here asks them
/// to stop before.
class WorkerThread {
public:
    explicit WorkerThread(const QString& name);
    ~WorkerThread();
    WorkerThread(const WorkerThread&) = delete;
    WorkerThread& operator=(const WorkerThread&) = delete;

    EventLoopExecutor& executor() { return *executor_; }

    /// Called by the thread at its very end.
    std::function<void()> onFinished;

    /// Ends the thread as soon as no coroutine is left, which meanwhile may ask the calling thread for
    /// something; false when that takes longer than `limit`. What is asked of it afterwards is not done.
    bool finish(std::chrono::milliseconds limit);

private:
    void quitWhenIdle();

    std::unique_ptr<QThread> thread_;
    bool isEnding_ = false;
    std::unique_ptr<EventLoopExecutor> executor_; // outlives the thread: answers on their way may ask again
};

} // namespace fernhollow
