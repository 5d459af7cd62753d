#pragma once

#include <QObject>
#include <qcorotask.h>

#include <deque>
#include <functional>
#include <stop_token>

namespace fernhollow {

/// A task with nothing to do.
QCoro::Task<> noTask();

/// Starts the main thread's coroutines and ends them.
///
/// A task begins after the handler that asked for it has returned, in the order of the requests. What
/// escapes from a task goes to the debug log. Destroying the scope, or stop(), drops the tasks that
/// have not begun and requests a stop of the others, which ends the sleeps that watch for it. A task must
/// own, or share in owning, what it uses: its body hands everything on by value.
class TaskScope : public QObject {
public:
    using Body = std::function<QCoro::Task<>(std::stop_token)>;

    TaskScope() = default;
    ~TaskScope() override;

    void start(Body body);

    /// Begins the waiting tasks now instead of in the next turn of the event loop.
    void beginWaiting();

    /// No task begins any more; those whose sleep watches for the stop go on before this returns.
    void stop();

protected:
    bool event(QEvent* event) override;

private:
    std::deque<Body> waiting_;
    std::stop_source stop_;
    bool posted_ = false;
};

} // namespace fernhollow
