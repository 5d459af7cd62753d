#include "App/Shell/Launch.h"

#include "App/Shell/FernhollowApp.h"
#include "App/Shell/SingleInstance.h"
#include "App/Shell/TerminationSignals.h"
#include "App/Widgets/Theme.h"
#include "Platform/Desktop.h"
#include "Platform/SessionBus.h"
#include "Support/ApplicationIdentity.h"

#include <QApplication>
#include <QCommandLineParser>

#include <chrono>
#include <cstdio>
#include <optional>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>

namespace fernhollow {
namespace {

using namespace std::chrono_literals;

constexpr int usageError = 2;

// A bus that starts with the session may be slow for a moment; nothing is counted while we wait.
constexpr auto busPatience = 2s;

struct CommandLine {
    std::optional<InstanceRequest> request{}; ///< --toggle or --quit
    std::optional<int> exitCode{};            ///< set when there is nothing left to do
};

CommandLine parse(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("fernhollow"));
    QCoreApplication::setApplicationVersion(QString::fromUtf8(applicationVersion().data()));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Counts how many keys you press, never what you type."));
    const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")},
                                  QStringLiteral("Show this help."));
    const QCommandLineOption version({QStringLiteral("v"), QStringLiteral("version")},
                                     QStringLiteral("Show the version."));
    const QCommandLineOption toggle(
        QStringLiteral("toggle"),
        QStringLiteral("Do what a click on the status item does: show or hide the main "
                       "window. Starts Fernhollow if it does not run."));
    const QCommandLineOption quit(
        QStringLiteral("quit"), QStringLiteral("End the Fernhollow that runs, and wait until it has ended."));
    // Session managers start a saved session's programs with this; the toolkit reads it.
    QCommandLineOption session(QStringLiteral("session"), {}, QStringLiteral("id"));
    session.setFlags(QCommandLineOption::HiddenFromHelp);
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    parser.addOptions({help, version, toggle, quit, session});

    if (!parser.parse(QCoreApplication::arguments()) || !parser.positionalArguments().isEmpty()) {
        const QString error =
            parser.errorText().isEmpty()
                ? QStringLiteral("Unexpected argument '%1'.").arg(parser.positionalArguments().first())
                : parser.errorText();
        std::fprintf(stderr, "fernhollow: %s Try 'fernhollow --help'.\n", qUtf8Printable(error));
        return {.exitCode = usageError};
    }
    if (parser.isSet(help)) {
        std::fputs(qUtf8Printable(parser.helpText()), stdout);
        return {.exitCode = EXIT_SUCCESS};
    }
    if (parser.isSet(version)) {
        std::printf("Fernhollow %s\n", qUtf8Printable(QCoreApplication::applicationVersion()));
        return {.exitCode = EXIT_SUCCESS};
    }
    if (parser.isSet(quit)) {
        return {.request = InstanceRequest::quit};
    }
    return {.request = parser.isSet(toggle) ? std::optional(InstanceRequest::toggle) : std::nullopt};
}

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

    const CommandLine command = parse(argc, argv);
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
    if (command.request == InstanceRequest::quit) {
        std::puts("Fernhollow is not running.");
        return EXIT_SUCCESS;
    }
    return run(argc, argv, {termination, instance}, command.request == InstanceRequest::toggle);
}

} // namespace fernhollow
