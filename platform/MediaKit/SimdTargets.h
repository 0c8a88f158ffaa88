#ifndef MEDIA_SIMD_TARGETS_H
#define MEDIA_SIMD_TARGETS_H

/*
 * Which instruction sets the kernels are compiled for; to be included before Highway. SSSE3 machines without
 * SSE4 are served by the plain kernels, AVX3_DL gains nothing over AVX3 here, and vectors without a fixed
 * length (SVE) don't fit code that caps their length.
 */
#define HWY_DISABLED_TARGETS (HWY_SSSE3 | HWY_AVX3_DL | HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128)

#include "MediaKit/Kernels.h"
#include "hwy/detect_targets.h"

#include <cstdint>

#if HWY_TARGETS & HWY_AVX3
#define MEDIA_CASE_AVX3(call)                                                                                \
    case HWY_AVX3:                                                                                           \
        N_AVX3::call;                                                                                        \
        break;
#else
#define MEDIA_CASE_AVX3(call)
#endif
#if HWY_TARGETS & HWY_AVX2
#define MEDIA_CASE_AVX2(call)                                                                                \
    case HWY_AVX2:                                                                                           \
        N_AVX2::call;                                                                                        \
        break;
#else
#define MEDIA_CASE_AVX2(call)
#endif
#if HWY_TARGETS & HWY_SSE4
#define MEDIA_CASE_SSE4(call)                                                                                \
    case HWY_SSE4:                                                                                           \
        N_SSE4::call;                                                                                        \
        break;
#else
#define MEDIA_CASE_SSE4(call)
#endif
#if HWY_TARGETS & HWY_NEON
#define MEDIA_CASE_NEON(call)                                                                                \
    case HWY_NEON:                                                                                           \
        N_NEON::call;                                                                                        \
        break;
#else
#define MEDIA_CASE_NEON(call)
#endif

/* Calls the function of one target's namespace; nothing for a target that isn't compiled in. */
#define MEDIA_CALL_FOR_TARGET(target, call)                                                                  \
    switch (target) {                                                                                        \
        MEDIA_CASE_AVX3(call)                                                                                \
        MEDIA_CASE_AVX2(call)                                                                                \
        MEDIA_CASE_SSE4(call)                                                                                \
        MEDIA_CASE_NEON(call)                                                                                \
    default:                                                                                                 \
        break;                                                                                               \
    }

namespace media {

/* Each fills its part of a table with the kernels of one of Highway's targets. */
void FillPixelKernels(std::int64_t target, Kernels& kernels);
void FillMosaicKernels(std::int64_t target, Kernels& kernels);
void FillHamiltonKernels(std::int64_t target, Kernels& kernels);

} // namespace media

#endif
