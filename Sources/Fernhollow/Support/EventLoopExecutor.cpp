#include "Support/EventLoopExecutor.h"

#include "Support/DebugLog.h"

#include <exception>
#include <string>

namespace fernhollow {

QEvent::Type detail::WorkEvent::type() {
    static const auto type = static_cast<QEvent::Type>(QEvent::registerEventType());
    return type;
}

bool EventLoopExecutor::event(QEvent* event) {
    if (event->type() != detail::WorkEvent::type()) {
        return QObject::event(event);
    }
    detail::takeOver(event);
    ++underWay_;
    watch(this, static_cast<detail::WorkEvent*>(event)->work());
    return true;
}

QCoro::Task<> EventLoopExecutor::watch(EventLoopExecutor* self, QCoro::Task<> task) {
    try {
        co_await task;
    } catch (const std::exception& error) {
        debugLog(std::string("[Tasks] A background task failed: ") + error.what());
    }
    --self->underWay_;
}

} // namespace fernhollow
