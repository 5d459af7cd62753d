#include "Support/SerialExecutor.h"

#include <QSemaphore>

#include <memory>

namespace fernhollow {

SerialExecutor::SerialExecutor() {
    executor_.moveToThread(&thread_);
    thread_.start();
}

SerialExecutor::~SerialExecutor() {
    executor_.post([this] {
        thread_.quit();
        detail::handOver(this);
    });
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
