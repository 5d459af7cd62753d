#pragma once

#include <QObject>
#include <qcorotask.h>

#include <deque>
#include <functional>

namespace fernhollow {

/// A task with nothing to do.
QCoro::Task<> noTask();

/// Starts the main thread's coroutines.
///
/// A task begins after the handler that asked for it has returned, in the order of the requests. What
/// escapes from a task goes to the debug log. Destroying the scope, or stop(), drops the tasks that
/// have not begun. The others go on to their end; one that sleeps is stopped by the object that it belongs
/// to. A task must own, or share in owning, what it uses: its body hands everything on by value.
class TaskScope : public QObject {
public:
    using Body = std::function<QCoro::Task<>()>;

    void start(Body body);

    /// Begins the waiting tasks now instead of in the next turn of the event loop.
    void beginWaiting();

    /// No task begins any more.
    void stop();

protected:
    bool event(QEvent* event) override;

private:
    std::deque<Body> waiting_;
    bool posted_ = false;
    bool isStopped_ = false;
};

} // namespace fernhollow
