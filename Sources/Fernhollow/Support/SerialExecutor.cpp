#include "Support/SerialExecutor.h"

namespace fernhollow {
namespace detail {
namespace {

class Deliveries final : public QObject {
protected:
    bool event(QEvent* event) override {
        if (event->type() != DeliveryEvent::type()) {
            return QObject::event(event);
        }
        static_cast<DeliveryEvent*>(event)->deliver();
        return true;
    }
};

} // namespace

QEvent::Type DeliveryEvent::type() {
    static const auto type = static_cast<QEvent::Type>(QEvent::registerEventType());
    return type;
}

std::shared_ptr<QObject> deliveriesOfThisThread() {
    // Never destroyed: the last writes are asked for while exit() has already run thread-local destructors.
    static thread_local const auto* const deliveries =
        new std::shared_ptr<QObject>(std::make_shared<Deliveries>());
    return *deliveries;
}

} // namespace detail

SerialExecutor::SerialExecutor() {
    pool_.setMaxThreadCount(1);
    pool_.setExpiryTimeout(-1); // one thread for good: a new one each minute would cost more
}

bool SerialExecutor::waitUntilIdle(std::chrono::milliseconds limit) {
    const bool isIdle = pool_.waitForDone(static_cast<int>(limit.count()));
    QCoreApplication::sendPostedEvents(detail::deliveriesOfThisThread().get());
    return isIdle;
}

} // namespace fernhollow
