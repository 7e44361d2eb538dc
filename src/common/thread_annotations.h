// Clang's thread-safety attributes (-Wthread-safety): which lock guards which data, and which
// functions need a lock held. Other compilers see nothing.
#pragma once

#if defined(__clang__)
#define VEXCAP_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define VEXCAP_THREAD_ANNOTATION(x)
#endif

#define VEXCAP_CAPABILITY(name) VEXCAP_THREAD_ANNOTATION(capability(name))
#define VEXCAP_SCOPED_CAPABILITY VEXCAP_THREAD_ANNOTATION(scoped_lockable)
#define VEXCAP_GUARDED_BY(lock) VEXCAP_THREAD_ANNOTATION(guarded_by(lock))
#define VEXCAP_PT_GUARDED_BY(lock) VEXCAP_THREAD_ANNOTATION(pt_guarded_by(lock))
#define VEXCAP_REQUIRES(...) VEXCAP_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define VEXCAP_EXCLUDES(...) VEXCAP_THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))
#define VEXCAP_ACQUIRE(...) VEXCAP_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define VEXCAP_RELEASE(...) VEXCAP_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
#define VEXCAP_TRY_ACQUIRE(...) VEXCAP_THREAD_ANNOTATION(try_acquire_capability(__VA_ARGS__))
#define VEXCAP_ASSERT_CAPABILITY(lock) VEXCAP_THREAD_ANNOTATION(assert_capability(lock))
#define VEXCAP_NO_THREAD_SAFETY_ANALYSIS VEXCAP_THREAD_ANNOTATION(no_thread_safety_analysis)
