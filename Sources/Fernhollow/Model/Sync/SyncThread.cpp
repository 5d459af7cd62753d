#include "Model/Sync/SyncThread.h"

namespace fernhollow {

SyncThread::SyncThread(Clock& clock) : clock_(clock), session_(clock) {}

SyncSurroundings SyncThread::surroundings() {
    if (!thread_) {
        thread_.emplace(QStringLiteral("Sync"));
        thread_->onFinished = [this] { session_.close(); };
    }
    return {clock_, thread_->executor(), mainThread_, session_};
}

bool SyncThread::finish(std::chrono::milliseconds limit) {
    return !thread_ || thread_->finish(limit);
}

} // namespace fernhollow
