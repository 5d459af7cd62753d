#pragma once

#include "Model/Sync/SyncEngine.h"
#include "Support/EventLoopExecutor.h"
#include "Support/HttpSession.h"
#include "Support/WorkerThread.h"

#include <chrono>
#include <optional>

namespace fernhollow {

/// The thread of all sync engines of the program, with the connections that they share.
///
/// Made and ended by the main thread; runs from the first engine on. Outlives the coordinators.
class SyncThread {
public:
    explicit SyncThread(Clock& clock);

    /// What an engine stands on; starts the thread.
    SyncSurroundings surroundings();

    /// Ends the thread once the engines, which have been told to stop, are done; false when that takes
    /// longer than `limit`.
    bool finish(std::chrono::milliseconds limit);

private:
    Clock& clock_;
    EventLoopExecutor mainThread_;
    HttpSession session_;
    std::optional<WorkerThread> thread_;
};

} // namespace fernhollow
