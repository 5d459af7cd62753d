#include "Support/TaskScope.h"

#include "Support/DebugLog.h"

#include <QCoreApplication>
#include <QEvent>

#include <exception>
#include <string>
#include <utility>

namespace fernhollow {
namespace {

QCoro::Task<> runLogged(TaskScope::Body body) {
    try {
        co_await body();
    } catch (const std::exception& error) {
        debugLog(std::string("[Tasks] A background task failed: ") + error.what());
    }
}

} // namespace

QCoro::Task<> noTask() {
    co_return;
}

void TaskScope::start(Body body) {
    if (isStopped_) {
        return;
    }
    waiting_.push_back(std::move(body));
    if (!std::exchange(posted_, true)) {
        QCoreApplication::postEvent(this, new QEvent(QEvent::User));
    }
}

void TaskScope::beginWaiting() {
    // Tasks that these start wait for the next turn, so that no task can starve the event loop.
    for (auto bodies = std::exchange(waiting_, {}); !bodies.empty(); bodies.pop_front()) {
        if (isStopped_) {
            return;
        }
        runLogged(std::move(bodies.front()));
    }
}

void TaskScope::stop() {
    waiting_.clear();
    isStopped_ = true;
}

bool TaskScope::event(QEvent* event) {
    if (event->type() != QEvent::User) {
        return QObject::event(event);
    }
    posted_ = false;
    beginWaiting();
    return true;
}

} // namespace fernhollow
