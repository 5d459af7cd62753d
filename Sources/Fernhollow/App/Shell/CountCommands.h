#pragma once

#include <QString>

namespace fernhollow {

// Commands that answer from the signed-in account's database and end, whether or not the program runs. Each
// returns the process's exit code; what went wrong is on stderr. A QCoreApplication exists.

/// Prints today's presses on this machine as a number or, with `asJson`, with the hours and applications.
int printToday(bool asJson);

/// Writes all counts to a file whose name ends in ".csv" or ".json", whole or not at all.
int exportCounts(const QString& file);

} // namespace fernhollow
