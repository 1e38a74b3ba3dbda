#pragma once

// Qt orders some hand-overs between threads with its own locks: a queued signal's argument, a
// QThread's work seen after it has finished. Those locks live in the uninstrumented Qt libraries,
// where ThreadSanitizer cannot see them. Where the program relies on such an order, the sending
// side calls handOverThread() and the receiving side takeOverThread() on the same address, so
// that TSan sees the order Qt guarantees. Nothing at all in other builds.

#if defined(__SANITIZE_THREAD__)
#define RECORDER_TSAN 1
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define RECORDER_TSAN 1
#endif
#endif

#ifdef RECORDER_TSAN
#include <sanitizer/tsan_interface.h>
#endif

// Everything this thread did so far is to be seen by the thread that takes `what` over.
inline void handOverThread(const void *what)
{
#ifdef RECORDER_TSAN
    __tsan_release(const_cast<void *>(what));
#else
    (void)what;
#endif
}

// This thread now sees what was done before the matching handOverThread(what).
inline void takeOverThread(const void *what)
{
#ifdef RECORDER_TSAN
    __tsan_acquire(const_cast<void *>(what));
#else
    (void)what;
#endif
}
