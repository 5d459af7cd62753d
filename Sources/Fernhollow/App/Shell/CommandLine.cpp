#include "App/Shell/CommandLine.h"

#include "App/Shell/CountCommands.h"
#include "Support/ApplicationIdentity.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <cstdio>
#include <cstdlib>

namespace fernhollow {
namespace {

constexpr int usageError = 2;

struct Options {
    QCommandLineOption help{{QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this help.")};
    QCommandLineOption version{{QStringLiteral("v"), QStringLiteral("version")},
                               QStringLiteral("Show the version.")};
    QCommandLineOption toggle{
        QStringLiteral("toggle"),
        QStringLiteral("Do what a click on the status item does: show or hide the main window. Starts "
                       "Fernhollow if it is not running.")};
    QCommandLineOption pause{QStringLiteral("pause"),
                             QStringLiteral("Stop counting until --resume or the next start.")};
    QCommandLineOption resume{QStringLiteral("resume"), QStringLiteral("Count again after --pause.")};
    QCommandLineOption quit{
        QStringLiteral("quit"),
        QStringLiteral("End the running Fernhollow, and wait until it has written every count.")};
    QCommandLineOption today{
        QStringLiteral("today"),
        QStringLiteral("Print today's key presses on this machine. Works whether or not Fernhollow runs.")};
    QCommandLineOption json{
        QStringLiteral("json"),
        QStringLiteral("With --today: print the hours and applications as well, as JSON.")};
    QCommandLineOption exportTo{
        QStringLiteral("export"),
        QStringLiteral("Write all counts of this machine to a file that ends in .csv or .json."),
        QStringLiteral("file")};
    // Session managers start a saved session's programs with this; the toolkit reads it.
    QCommandLineOption session{QStringLiteral("session"), {}, QStringLiteral("id")};

    QList<QCommandLineOption> all() {
        session.setFlags(QCommandLineOption::HiddenFromHelp);
        return {help, version, toggle, pause, resume, quit, today, json, exportTo, session};
    }
};

/// What is wrong with the arguments; empty when nothing is.
QString problem(const QCommandLineParser& parser, const Options& options) {
    if (!parser.positionalArguments().isEmpty()) {
        return QStringLiteral("Unexpected argument '%1'.").arg(parser.positionalArguments().first());
    }
    if (parser.isSet(options.json) && !parser.isSet(options.today)) {
        return QStringLiteral("--json belongs to --today.");
    }
    return {};
}

CommandLine refuse(const QString& why) {
    std::fprintf(stderr, "fernhollow: %s Try 'fernhollow --help'.\n", qUtf8Printable(why));
    return {.exitCode = usageError};
}

} // namespace

CommandLine CommandLine::parse(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("fernhollow"));
    QCoreApplication::setApplicationVersion(QString::fromUtf8(applicationVersion().data()));

    QCommandLineParser parser;
    Options options;
    parser.setApplicationDescription(QStringLiteral("Counts how many keys you press, never what you type."));
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    parser.addOptions(options.all());
    if (!parser.parse(QCoreApplication::arguments())) {
        return refuse(parser.errorText());
    }
    if (const QString wrong = problem(parser, options); !wrong.isEmpty()) {
        return refuse(wrong);
    }
    if (parser.isSet(options.help)) {
        std::fputs(qUtf8Printable(parser.helpText()), stdout);
        return {.exitCode = EXIT_SUCCESS};
    }
    if (parser.isSet(options.version)) {
        std::printf("Fernhollow %s\n", qUtf8Printable(QCoreApplication::applicationVersion()));
        return {.exitCode = EXIT_SUCCESS};
    }
    if (parser.isSet(options.today)) {
        return {.exitCode = printToday(parser.isSet(options.json))};
    }
    if (parser.isSet(options.exportTo)) {
        return {.exitCode = exportCounts(parser.value(options.exportTo))};
    }
    for (const auto& [option, request] :
         {std::pair{&options.quit, InstanceRequest::quit}, std::pair{&options.pause, InstanceRequest::pause},
          std::pair{&options.resume, InstanceRequest::resume},
          std::pair{&options.toggle, InstanceRequest::toggle}}) {
        if (parser.isSet(*option)) {
            return {.request = request};
        }
    }
    return {};
}

} // namespace fernhollow
