#pragma once

#include "Support/EventLoopExecutor.h"

#include <QThread>

#include <chrono>
#include <functional>
#include <memory>

namespace fernhollow {

/// A thread with an event loop of its own. It ends only after all of its coroutines have ended.
///
/// Created and ended by the main thread; the destructor waits for the coroutines. Their owner has to ask them
/// to stop first.
class WorkerThread {
public:
    explicit WorkerThread(const QString& name);
    ~WorkerThread();
    WorkerThread(const WorkerThread&) = delete;
    WorkerThread& operator=(const WorkerThread&) = delete;

    EventLoopExecutor& executor() { return *executor_; }

    /// Called on the thread itself when it ends.
    std::function<void()> onFinished;

    /// Ends the thread as soon as no coroutine is left there; until then, those may still ask the
    /// calling thread for something. False when that takes longer than `limit`. Work that is posted
    /// later is not done.
    bool finish(std::chrono::milliseconds limit);

private:
    void quitWhenIdle();

    std::unique_ptr<QThread> thread_;
    bool isEnding_ = false;
    std::unique_ptr<EventLoopExecutor> executor_; // outlives the thread: late answers may still post to it
};

} // namespace fernhollow
