#pragma once

#include <chrono>

namespace fernhollow {

/// Keeps this process away from a session bus that takes connections and never answers. Libraries would wait
/// for such a bus on the main thread, some of them for ever.
///
/// It gives the bus `limit` to answer. If the bus does not, a line in the log says so, and every later
/// attempt in this process to reach the bus fails at once, including a library's. When the bus answers, or
/// nothing listens at its address, this takes less than a millisecond. Call it at the start of the program,
/// before any library uses the bus.
void avoidSilentSessionBus(std::chrono::milliseconds limit);

} // namespace fernhollow
