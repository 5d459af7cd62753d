#include "App/Shell/Ending.h"

#include <QCoreApplication>
#include <QHostInfo>

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace fernhollow {
namespace {

// A function that exit() calls has no argument, so its work waits here. It is never destroyed, because the
// destructors of globals run among those functions.
std::function<void()>& pendingWork() {
    static auto* const work = new std::function<void()>;
    return *work;
}

void endAtExit() {
    if (const auto work = std::exchange(pendingWork(), nullptr)) {
        work();
        leave(EXIT_FAILURE);
    }
}

} // namespace

void leave(int status) {
    std::fflush(nullptr);
    std::_Exit(status);
}

AtExit::AtExit(std::function<void()> lastWork) {
    // exit() goes backwards. The toolkit's own part, which waits for name servers, is registered with its
    // first look-up of a name: one is made here, so that it comes after ours.
    QHostInfo::lookupHost(QStringLiteral("127.0.0.1"), QCoreApplication::instance(), [](const QHostInfo&) {});
    pendingWork() = std::move(lastWork);
    std::atexit(endAtExit);
}

AtExit::~AtExit() {
    pendingWork() = nullptr;
}

} // namespace fernhollow
