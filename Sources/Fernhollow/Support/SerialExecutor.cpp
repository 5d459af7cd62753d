#include "Support/SerialExecutor.h"

#include <unistd.h>

namespace fernhollow {
namespace detail {
namespace {

class Deliveries final : public QObject {
protected:
    bool event(QEvent* event) override {
        if (event->type() != DeliveryEvent::type()) {
            return QObject::event(event);
        }
        takeOver(event);
        static_cast<DeliveryEvent*>(event)->deliver();
        return true;
    }
};

// The main thread's is never destroyed: the last writes are asked for while exit() has already run its
// thread-local destructors.
struct OfThisThread {
    ~OfThisThread() {
        if (::gettid() != ::getpid()) {
            delete object;
        }
    }
    std::shared_ptr<QObject>* object = new std::shared_ptr<QObject>(std::make_shared<Deliveries>());
};

} // namespace

QEvent::Type DeliveryEvent::type() {
    static const auto type = static_cast<QEvent::Type>(QEvent::registerEventType());
    return type;
}

std::shared_ptr<QObject> deliveriesOfThisThread() {
    static thread_local const OfThisThread deliveries;
    return *deliveries.object;
}

} // namespace detail

SerialExecutor::SerialExecutor() {
    pool_.setMaxThreadCount(1);
    pool_.setExpiryTimeout(-1); // one thread for good: a new one each minute would cost more
}

SerialExecutor::~SerialExecutor() {
    pool_.waitForDone();
    detail::takeOver(this);
}

bool SerialExecutor::waitUntilIdle(std::chrono::milliseconds limit) {
    const bool isIdle = pool_.waitForDone(static_cast<int>(limit.count()));
    if (isIdle) {
        detail::takeOver(this);
    }
    QCoreApplication::sendPostedEvents(detail::deliveriesOfThisThread().get());
    return isIdle;
}

} // namespace fernhollow
