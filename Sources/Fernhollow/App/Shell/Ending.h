#pragma once

#include <functional>

namespace fernhollow {

// How the program ends. Whichever way it is, the presses that are left are written first:
//
// - "Quit", --quit, or an update that restarts: the event loop returns, the long-lived objects end (the model
//   writes, the sync engine stops), and leave() skips the rest.
// - A signal: TerminationSignals tells the main thread, which writes at once and then quits as above. Where
//   the main thread waits for a display or a bus that does not answer, the connections are cut under it, and
//   what follows is the next way; where even that does not help in time, TerminationSignals ends the process.
// - The display goes away: the toolkit calls exit() from inside whatever it was doing. Nothing can be unwound
//   any more, so the last work runs from an AtExit, and leave() skips the rest.
// - The end of the session is announced (commitDataRequest): the model writes, and one of the others follows.
//
// What exit() and the last writes need outlives every destructor: AppStateHolder, and the main thread's
// receiver of answers (Future.cpp). At the end no event loop runs any more. Where the main thread then waits
// for another thread it dispatches what that thread still asks of it (SerialExecutor, WorkerThread).

/// Ends the process without what remains of it: once all is written, the toolkit would only go on waiting for
/// name servers that do not answer.
[[noreturn]] void leave(int status);

/// Has exit() do the last work while this object lives. One at a time; main thread.
class AtExit {
public:
    explicit AtExit(std::function<void()> lastWork);
    ~AtExit();
    AtExit(const AtExit&) = delete;
    AtExit& operator=(const AtExit&) = delete;
};

} // namespace fernhollow
