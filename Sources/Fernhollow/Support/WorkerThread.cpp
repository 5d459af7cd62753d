#include "Support/WorkerThread.h"

#include "Support/DebugLog.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTimer>

#include <utility>

namespace fernhollow {
namespace {

using namespace std::chrono_literals;

// While the thread ends, how long either thread waits before it handles the other's answers.
constexpr auto endingStep = 2ms;

} // namespace

WorkerThread::WorkerThread(const QString& name)
    : thread_(std::make_unique<QThread>()), executor_(std::make_unique<EventLoopExecutor>()) {
    thread_->setObjectName(name);
    executor_->moveToThread(thread_.get());
    QObject::connect(
        thread_.get(), &QThread::finished, executor_.get(),
        [this] {
            if (onFinished) {
                onFinished();
            }
        },
        Qt::DirectConnection);
    thread_->start();
}

WorkerThread::~WorkerThread() {
    while (!finish(1s)) {
        debugLog("[Tasks] The thread " + thread_->objectName().toStdString() + " does not end");
    }
}

bool WorkerThread::finish(std::chrono::milliseconds limit) {
    if (thread_->isFinished()) {
        return true;
    }
    if (!std::exchange(isEnding_, true)) {
        executor_->post([this] { quitWhenIdle(); });
    }
    const QDeadlineTimer deadline(limit);
    while (!thread_->wait(QDeadlineTimer(endingStep))) {
        QCoreApplication::sendPostedEvents(); // requests that the thread's coroutines still make to this one
        if (deadline.hasExpired()) {
            return false;
        }
    }
    QCoreApplication::sendPostedEvents();
    return true;
}

// Runs on the thread. A timer checks, because a coroutine that checked would itself count as under way.
void WorkerThread::quitWhenIdle() {
    auto* timer = new QTimer(executor_.get());
    QObject::connect(timer, &QTimer::timeout, executor_.get(), [this, timer] {
        if (executor_->underWay() == 0) {
            timer->stop();
            thread_->quit();
        }
    });
    timer->start(endingStep);
}

} // namespace fernhollow
