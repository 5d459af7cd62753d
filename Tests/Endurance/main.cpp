// Simulates lives; see `usage`.

#include "Endurance/Life.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <cstdio>
#include <exception>
#include <string>

using namespace fernhollow::tests;

namespace {

constexpr const char* usage = "endure [SEED] [--days N] [--seeds N] [--every-fault] [--verbose]\n"
                              "Simulates a year, or N days, for each of N seeds from SEED on.\n"
                              "--every-fault   has each kind of fault in the first week\n"
                              "--verbose       shows every fault and the machine's log where counts differ\n";

bool live(const Life::Options& options, int days) {
    constexpr int daysPerReport = 30;
    QElapsedTimer timer;
    timer.start();
    Life life(options);
    try {
        for (int day = 1; day <= days; ++day) {
            life.liveDay();
            if (day % daysPerReport == 0 || day == days) {
                std::printf("seed %s, %s: %s, no difference, %.1f days a second\n",
                            std::to_string(options.seed).c_str(), life.day().c_str(),
                            life.takeReport().c_str(), day * 1000.0 / static_cast<double>(timer.elapsed()));
                std::fflush(stdout);
            }
        }
        return true;
    } catch (const std::exception& failure) {
        std::printf("seed %s, %s: %s\n%s", std::to_string(options.seed).c_str(), life.day().c_str(),
                    failure.what(), life.history().c_str());
        return false;
    }
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    Life::Options options;
    int days = 365;
    std::uint64_t seeds = 1;
    const auto arguments = QCoreApplication::arguments();
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        const std::string argument = arguments[i].toStdString();
        if (argument == "--every-fault") {
            options.hasEveryFault = true;
        } else if (argument == "--verbose") {
            options.isVerbose = true;
        } else if (argument == "--days" && i + 1 < arguments.size()) {
            days = arguments[++i].toInt();
        } else if (argument == "--seeds" && i + 1 < arguments.size()) {
            seeds = arguments[++i].toULongLong();
        } else if (arguments[i].toULongLong() > 0) {
            options.seed = arguments[i].toULongLong();
        } else {
            std::printf("%s", usage);
            return argument == "--help" ? 0 : 2;
        }
    }
    bool isRight = true;
    for (const auto end = options.seed + seeds; options.seed < end; ++options.seed) {
        isRight &= live(options, days);
    }
    return isRight ? 0 : 1;
}
