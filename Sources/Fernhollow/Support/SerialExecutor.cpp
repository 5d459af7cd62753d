#include "Support/SerialExecutor.h"

#include <QSemaphore>

#include <memory>

namespace fernhollow {

SerialExecutor::SerialExecutor() {
    executor_.moveToThread(&thread_);
    // Only at the thread's end, because the executor still updates its count after the last piece of work.
    QObject::connect(
        &thread_, &QThread::finished, &executor_, [this] { detail::handOver(this); }, Qt::DirectConnection);
    thread_.start();
}

SerialExecutor::~SerialExecutor() {
    executor_.post([this] { thread_.quit(); });
    thread_.wait();
    detail::takeOver(this);
}

bool SerialExecutor::waitUntilIdle(std::chrono::milliseconds limit) {
    const auto done = std::make_shared<QSemaphore>();
    executor_.post([this, done] {
        detail::handOver(this);
        done->release();
    });
    const bool isIdle = done->tryAcquire(1, static_cast<int>(limit.count()));
    if (isIdle) {
        detail::takeOver(this);
    }
    QCoreApplication::sendPostedEvents(detail::deliveriesOfThisThread().get());
    return isIdle;
}

} // namespace fernhollow
