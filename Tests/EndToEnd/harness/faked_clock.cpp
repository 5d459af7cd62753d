// Preloaded into the program under test. It gives it a wall clock that shows the time that the test
// sets, and does not change monotonic time. The clock is a file with the seconds since the epoch as a
// native 64-bit integer. No code here allocates or looks up symbols, so it works from the first moment
// of the process.

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <fcntl.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

namespace {

bool faked(std::int64_t& seconds) {
    static std::atomic<long> known = -1;
    long file = known.load();
    if (file < 0) {
        const char* path = std::getenv("FAKED_CLOCK");
        file = path != nullptr ? syscall(SYS_openat, AT_FDCWD, path, O_RDONLY | O_CLOEXEC) : -1;
        known.store(file); // two threads may each open it; both files stay valid
    }
    return file >= 0 && syscall(SYS_pread64, file, &seconds, sizeof seconds, 0L) == sizeof seconds;
}

} // namespace

extern "C" {

int clock_gettime(clockid_t id, timespec* now) noexcept {
    std::int64_t seconds = 0;
    if ((id == CLOCK_REALTIME || id == CLOCK_REALTIME_COARSE) && faked(seconds)) {
        *now = {seconds, 0};
        return 0;
    }
    return static_cast<int>(syscall(SYS_clock_gettime, id, now));
}

int gettimeofday(timeval* now, void*) noexcept {
    timespec precise{};
    const int result = clock_gettime(CLOCK_REALTIME, &precise);
    *now = {precise.tv_sec, precise.tv_nsec / 1000};
    return result;
}

time_t time(time_t* now) noexcept {
    timespec precise{};
    clock_gettime(CLOCK_REALTIME, &precise);
    if (now != nullptr) {
        *now = precise.tv_sec;
    }
    return precise.tv_sec;
}

int timespec_get(timespec* now, int base) noexcept {
    return clock_gettime(CLOCK_REALTIME, now) == 0 ? base : 0;
}
}
