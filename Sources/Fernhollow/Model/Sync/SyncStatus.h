#pragma once

#include "Support/Clock.h"
#include "Support/Observable.h"

#include <optional>

namespace fernhollow {

/// How one sync engine fares, for the windows. Main thread only; the coordinator owns it, its engine sets it.
class SyncStatus : public Observable {
public:
    /// Since when counts have been waiting that could not be sent: the moment, on the monotonic clock, of
    /// the first attempt that failed. Absent while there is no such attempt, which includes counts that
    /// wait their turn.
    Published<std::optional<Moment>> unsentSince{*this};
};

} // namespace fernhollow
