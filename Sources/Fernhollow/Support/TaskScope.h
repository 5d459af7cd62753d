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
/// A task begins after the handler that asked for it has returned, in the order of the requests. An
/// exception that escapes from a task goes to the debug log. Destroying the scope, or stop(), drops the
/// tasks that have not begun. The others run to their end; the object that owns a sleeping task stops it.
/// A task must own, or share ownership of, what it uses, so its body passes everything on by value.
class TaskScope : public QObject {
public:
    using Body = std::function<QCoro::Task<>()>;

    void start(Body body);

    /// Starts the waiting tasks now instead of in the next turn of the event loop.
    void beginWaiting();

    /// Drops the tasks that have not begun; later ones never begin.
    void stop();

protected:
    bool event(QEvent* event) override;

private:
    std::deque<Body> waiting_;
    bool posted_ = false;
    bool isStopped_ = false;
};

} // namespace fernhollow
