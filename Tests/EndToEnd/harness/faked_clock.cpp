// Preloaded into the program under test: shows it a wall clock that stands or runs from where the test puts
// it, and a monotonic clock that the test can move ahead, as if time had passed. The clock is a file of two
// native 64-bit integers, each written alone. Nothing here allocates or looks up symbols, so it may be asked
// as early as a process lives. Only a wait for a span of time sees the jump, not one until a moment.

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <fcntl.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

namespace {

constexpr std::int64_t second = 1'000'000'000; // in nanoseconds

enum class Field : long { wall, skipped };

bool faked(Field field, std::int64_t& value) {
    static std::atomic<long> known = -1;
    long file = known.load();
    if (file < 0) {
        const char* path = std::getenv("FAKED_CLOCK");
        file = path != nullptr ? syscall(SYS_openat, AT_FDCWD, path, O_RDONLY | O_CLOEXEC) : -1;
        known.store(file); // two threads may each open it; both files stay valid
    }
    const long offset = static_cast<long>(field) * static_cast<long>(sizeof value);
    return file >= 0 && syscall(SYS_pread64, file, &value, sizeof value, offset) == sizeof value;
}

std::int64_t realMonotonic() {
    timespec now{};
    syscall(SYS_clock_gettime, CLOCK_MONOTONIC, &now);
    return now.tv_sec * second + now.tv_nsec;
}

timespec timeOf(std::int64_t nanoseconds) {
    return {nanoseconds / second, nanoseconds % second};
}

// No date in seconds is as large as the nanoseconds that a running clock is ahead of the monotonic one.
bool fakedWall(timespec& now) {
    std::int64_t wall = 0;
    if (!faked(Field::wall, wall)) {
        return false;
    }
    const bool isRunning = wall > 1'000'000 * second;
    now = isRunning ? timeOf(realMonotonic() + wall) : timespec{wall, 0};
    return true;
}

} // namespace

extern "C" {

int clock_gettime(clockid_t id, timespec* now) noexcept {
    if ((id == CLOCK_REALTIME || id == CLOCK_REALTIME_COARSE) && fakedWall(*now)) {
        return 0;
    }
    std::int64_t skipped = 0;
    const bool isMonotonic = id == CLOCK_MONOTONIC || id == CLOCK_MONOTONIC_COARSE ||
                             id == CLOCK_MONOTONIC_RAW || id == CLOCK_BOOTTIME;
    if (isMonotonic && faked(Field::skipped, skipped)) {
        *now = timeOf(realMonotonic() + skipped);
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
