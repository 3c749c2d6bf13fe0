// Clang thread-safety annotations (checked by -Wthread-safety); empty under other compilers.
#ifndef DMR_CMN_THREAD_ANNOTATIONS_H_
#define DMR_CMN_THREAD_ANNOTATIONS_H_

#if defined(__clang__)
#define DMR_CMN_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define DMR_CMN_THREAD_ANNOTATION(x)
#endif

#define DMR_CMN_CAPABILITY(x) DMR_CMN_THREAD_ANNOTATION(capability(x))
#define DMR_CMN_GUARDED_BY(x) DMR_CMN_THREAD_ANNOTATION(guarded_by(x))
#define DMR_CMN_PT_GUARDED_BY(x) DMR_CMN_THREAD_ANNOTATION(pt_guarded_by(x))
#define DMR_CMN_REQUIRES(...) DMR_CMN_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define DMR_CMN_TRY_ACQUIRE(...) DMR_CMN_THREAD_ANNOTATION(try_acquire_capability(__VA_ARGS__))
#define DMR_CMN_RELEASE(...) DMR_CMN_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
#define DMR_CMN_NO_THREAD_SAFETY_ANALYSIS DMR_CMN_THREAD_ANNOTATION(no_thread_safety_analysis)

#endif  // DMR_CMN_THREAD_ANNOTATIONS_H_
