// Lives lives: fernhollow_endurance [SEED] [--days N] [--seeds N] [--every-fault] [--verbose]

#include "Endurance/Life.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>

#include <cstdio>
#include <exception>

using namespace fernhollow::tests;

namespace {

constexpr int daysPerReport = 30;

bool live(const Life::Options& options, int days) {
    QElapsedTimer timer;
    timer.start();
    Life life(options);
    try {
        for (int day = 1; day <= days; ++day) {
            life.liveDay();
            if (day % daysPerReport == 0 || day == days) {
                std::printf("seed %llu, %s: %s, no difference, %.1f days a second\n",
                            static_cast<unsigned long long>(options.seed), life.day().c_str(),
                            life.takeReport().c_str(), day * 1000.0 / static_cast<double>(timer.elapsed()));
                std::fflush(stdout);
            }
        }
        return true;
    } catch (const std::exception& failure) {
        std::printf("seed %llu, %s: %s\n%s", static_cast<unsigned long long>(options.seed),
                    life.day().c_str(), failure.what(), life.history().c_str());
        return false;
    }
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    QCommandLineParser options;
    options.addPositionalArgument(QStringLiteral("seed"), QStringLiteral("The first life, 1 unless given"));
    options.addOption({QStringLiteral("days"), QStringLiteral("How long each lives"), QStringLiteral("days"),
                       QStringLiteral("365")});
    options.addOption({QStringLiteral("seeds"), QStringLiteral("How many lives"), QStringLiteral("seeds"),
                       QStringLiteral("1")});
    options.addOption(
        {QStringLiteral("every-fault"), QStringLiteral("Each kind of fault has its day in the first week")});
    options.addOption({QStringLiteral("partly-counted-backups"),
                       QStringLiteral("Backups are taken in the middle of a day, too")});
    options.addOption(
        {QStringLiteral("verbose"), QStringLiteral("Shows the machine's log where there is a difference")});
    options.addHelpOption();
    options.process(application);
    const auto arguments = options.positionalArguments();
    const auto first = arguments.isEmpty() ? 1 : arguments.front().toULongLong();
    bool isRight = true;
    for (auto seed = first; seed < first + options.value(QStringLiteral("seeds")).toULongLong(); ++seed) {
        isRight &= live({.seed = seed,
                         .hasEveryFault = options.isSet(QStringLiteral("every-fault")),
                         .hasPartlyCountedBackups = options.isSet(QStringLiteral("partly-counted-backups")),
                         .isVerbose = options.isSet(QStringLiteral("verbose"))},
                        options.value(QStringLiteral("days")).toInt());
    }
    return isRight ? 0 : 1;
}
