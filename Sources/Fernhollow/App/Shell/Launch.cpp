#include "App/Shell/Launch.h"

#include "App/Shell/CommandLine.h"
#include "App/Shell/Ending.h"
#include "App/Shell/FernhollowApp.h"
#include "App/Shell/SingleInstance.h"
#include "App/Shell/TerminationSignals.h"
#include "App/Widgets/Theme.h"
#include "Platform/Desktop.h"
#include "Platform/SessionBus.h"
#include "Support/ApplicationIdentity.h"

#include <QApplication>

#include <chrono>
#include <cstdio>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>

namespace fernhollow {
namespace {

using namespace std::chrono_literals;

// A bus that starts with the session may be slow for a moment; nothing is counted while we wait.
constexpr auto busPatience = 2s;

bool handToRunningInstance(int argc, char** argv, SingleInstance& instance, InstanceRequest request) {
    const QCoreApplication application(argc, argv);
    return instance.send(request, launchActivationToken());
}

// A core dump, or another program that attaches to this one, could see what the display server has just
// delivered.
void keepMemoryPrivate() {
    const rlimit noCore{0, 0};
    ::setrlimit(RLIMIT_CORE, &noCore);
#ifdef NDEBUG // debuggers and the leak sanitizer attach to the other builds
    ::prctl(PR_SET_DUMPABLE, 0);
#endif
}

struct Surroundings {
    TerminationSignals& termination;
    SingleInstance& instance;
};

int runApplication(QApplication& application, const Surroundings& around, bool showWindow) {
    auto& [termination, instance] = around;
    const Desktop desktop;
    FernhollowApp fernhollow(desktop);
    AppDelegate& delegate = fernhollow.delegate();
    termination.startReporting([] {
        FernhollowApp::flushNow(); // before the toolkit closes windows on a display that may not answer
        QCoreApplication::quit();
    });
    QObject::connect(&instance, &SingleInstance::requested, &delegate,
                     [&delegate](InstanceRequest request, const ActivationToken& token) {
                         switch (request) {
                         case InstanceRequest::activate:
                             return delegate.activate(token);
                         case InstanceRequest::toggle:
                             return delegate.statusItemClicked(token);
                         case InstanceRequest::pause:
                             return delegate.setPaused(true);
                         case InstanceRequest::resume:
                             return delegate.setPaused(false);
                         case InstanceRequest::quit:
                             return QCoreApplication::quit();
                         }
                     });
    QObject::connect(&application, &QCoreApplication::aboutToQuit, &instance, &SingleInstance::stopListening);
    instance.listen();
    delegate.applicationDidFinishLaunching();
    if (showWindow) {
        delegate.activate({}); // the toolkit itself uses the token that this process was started with
    }
    const int status = QApplication::exec();
    termination.stopReporting();
    return status;
}

int run(int argc, char** argv, const Surroundings& around, bool showWindow) {
    avoidSilentSessionBus(busPatience);
    if (!Desktop::isReachable()) {
        std::fputs("fernhollow: no display answers: start it in a desktop session\n", stderr);
        return EXIT_FAILURE;
    }
    QApplication::setDesktopFileName(QString::fromUtf8(applicationIdentifier.data()));
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    Theme::applyDark();

    const int status = runApplication(application, around, showWindow);
#ifndef FERNHOLLOW_LOOKS_FOR_LEAKS // which happens at an ordinary end
    leave(status);
#else
    return status;
#endif
}

} // namespace

int launch(int argc, char** argv) {
    TerminationSignals termination; // first: threads inherit that it holds the signals back
    ::umask(077);                   // what this program writes is for its user alone
    keepMemoryPrivate();

    const CommandLine command = CommandLine::parse(argc, argv);
    if (command.exitCode) {
        return *command.exitCode;
    }
    SingleInstance instance;
    if (!instance.acquire()) {
        const auto request = command.request.value_or(InstanceRequest::activate);
        if (handToRunningInstance(argc, argv, instance, request)) {
            return EXIT_SUCCESS;
        }
        if (!instance.acquire()) { // it may have been about to end
            std::fputs("fernhollow: it runs already but does not answer\n", stderr);
            return EXIT_FAILURE;
        }
    }
    if (command.request && *command.request != InstanceRequest::toggle) {
        std::puts("Fernhollow is not running.");
        return command.request == InstanceRequest::resume ? EXIT_FAILURE : EXIT_SUCCESS;
    }
    return run(argc, argv, {termination, instance}, command.request == InstanceRequest::toggle);
}

} // namespace fernhollow
