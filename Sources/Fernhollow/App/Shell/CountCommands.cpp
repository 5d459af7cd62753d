#include "App/Shell/CountCommands.h"

#include "KeypressCore/DailyCountsStoreError.h"
#include "Model/AccountManager.h"
#include "Model/CountExport.h"
#include "Support/Clock.h"

#include <QSaveFile>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>

namespace fernhollow {
namespace {

constexpr int usageError = 2;

int fail(const std::string& why, int status = EXIT_FAILURE) {
    std::fprintf(stderr, "fernhollow: %s\n", why.c_str());
    return status;
}

/// Runs `command` with the signed-in address and today.
template<class Command>
int withAccount(Command command) {
    const auto session = AccountManager::persistedSession();
    if (!session) {
        return fail("no account is signed in; start Fernhollow and sign in first");
    }
    try {
        return command(session->email, DayKey::today(SystemClock()));
    } catch (const DailyCountsStoreError& error) {
        return fail(std::string("the counts cannot be read: ") + error.what());
    } catch (const std::filesystem::filesystem_error& error) {
        return fail(std::string("the counts cannot be read: ") + error.what());
    }
}

} // namespace

int printToday(bool asJson) {
    return withAccount([asJson](const std::string& email, const DayKey& day) {
        const CountExport today = CountExport::ofDay(email, day);
        const std::string text = asJson ? today.dayJson() : std::to_string(today.days.front().count) + '\n';
        const bool isWritten = std::fputs(text.c_str(), stdout) >= 0 && std::fflush(stdout) == 0;
        return isWritten ? EXIT_SUCCESS : fail("the answer could not be written");
    });
}

int exportCounts(const QString& file) {
    const bool asCsv = file.endsWith(QStringLiteral(".csv"), Qt::CaseInsensitive);
    if (!asCsv && !file.endsWith(QStringLiteral(".json"), Qt::CaseInsensitive)) {
        return fail("the name of the file has to end in .csv or .json", usageError);
    }
    return withAccount([&file, asCsv](const std::string& email, const DayKey& today) {
        const CountExport counts = CountExport::ofAccount(email, today);
        QSaveFile target(file);
        if (!target.open(QIODevice::WriteOnly) ||
            target.write(QByteArray::fromStdString(asCsv ? counts.csv() : counts.json())) < 0 ||
            !target.commit()) {
            return fail(file.toStdString() + " could not be written: " + target.errorString().toStdString());
        }
        std::printf("%zu days in %s\n", counts.days.size(), qUtf8Printable(file));
        return EXIT_SUCCESS;
    });
}

} // namespace fernhollow
