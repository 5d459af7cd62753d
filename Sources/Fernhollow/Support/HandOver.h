#pragma once

#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define FERNHOLLOW_THREAD_SANITIZER
#include <sanitizer/tsan_interface.h>
#endif
#endif

/// Tells the thread sanitizer of a hand-over from one thread to another that it cannot see, because the queue
/// in between is the toolkit's, which is not instrumented. Everything before handOver(tag) then happens
/// before everything after takeOver(tag). The tag is what is handed over, or the executor whose work is
/// waited for: never anything that two executors share, or a race between them would pass for a hand-over.
/// Nothing in other builds.
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
