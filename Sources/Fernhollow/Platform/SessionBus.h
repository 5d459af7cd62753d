#pragma once

#include <chrono>

namespace fernhollow {

/// Keeps this process away from a session bus that takes connections and never answers: libraries would wait
/// for it on the main thread, some of them for good.
///
/// Asks the bus to answer within `limit`, and says in the log when it does not; every later attempt of this
/// process to reach it, a library's included, then fails at once. A bus that answers, or has no listener
/// at, costs less than a millisecond. For the start of the program, before any library may use the bus.
void avoidSilentSessionBus(std::chrono::milliseconds limit);

} // namespace fernhollow
