#pragma once

#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define FERNHOLLOW_THREAD_SANITIZER
#include <sanitizer/tsan_interface.h>
#endif
#endif

/// Declares to the thread sanitizer that one thread hands something over to another. It cannot see this by
/// itself, because the queue between them is Qt's, which is not instrumented. Everything before handOver(tag)
/// then happens before everything after takeOver(tag). The tag is the object that is handed over, or the
/// executor whose work a thread waits for. It must not be an object that two executors share, because a race
/// between them would then pass for a hand-over. Does nothing in other builds.
namespace fernhollow::detail {

inline void handOver([[maybe_unused]] void* tag) {
#ifdef FERNHOLLOW_THREAD_SANITIZER
    __tsan_release(tag);
#endif
}

inline void takeOver([[maybe_unused]] void* tag) {
#ifdef FERNHOLLOW_THREAD_SANITIZER
    __tsan_acquire(tag);
#endif
}

} // namespace fernhollow::detail
