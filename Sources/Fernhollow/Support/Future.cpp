#include "Support/Future.h"

#include <unistd.h>

namespace fernhollow::detail {
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

// The main thread's receiver is never destroyed, because the last writes are asked for after exit()
// has run the thread-local destructors.
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

} // namespace fernhollow::detail
