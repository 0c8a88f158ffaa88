#include "MediaKit/Kernels.h"

#include "MediaKit/SimdTargets.h"
#include "hwy/targets.h"

namespace media {

namespace {

struct NamedTarget {
    std::int64_t target;
    const char* name;
};

// From slow to fast.
constexpr NamedTarget kTargets[] = {
    {HWY_NEON, "NEON"}, {HWY_SSE4, "SSE4"}, {HWY_AVX2, "AVX2"}, {HWY_AVX3, "AVX-512"}};

std::vector<Kernels> MakeKernels() {
    std::vector<Kernels> all{PlainKernels()};
    const std::int64_t present = hwy::SupportedTargets() & HWY_TARGETS;
    for (const NamedTarget& target : kTargets) {
        if ((present & target.target) != 0) {
            Kernels& kernels = all.emplace_back();
            kernels.name = target.name;
            FillPixelKernels(target.target, kernels);
            FillMosaicKernels(target.target, kernels);
            FillHamiltonKernels(target.target, kernels);
            if (target.target == HWY_AVX3 && (present & HWY_AVX2) != 0) {
                // Three channels to four with vectors of 64 bytes: the shuffles across them cost more than
                // the length gains, a tenth of the whole.
                constexpr auto kBgrx = static_cast<std::size_t>(Layout::Bgrx);
                kernels.rgb[kBgrx] = all[all.size() - 2].rgb[kBgrx];
            }
        }
    }
    return all;
}

const std::vector<Kernels>& Made() {
    static const std::vector<Kernels> all = MakeKernels();
    return all;
}

} // namespace

std::vector<const Kernels*> AllKernels() {
    std::vector<const Kernels*> all;
    for (const Kernels& kernels : Made()) {
        all.push_back(&kernels);
    }
    return all;
}

const Kernels& BestKernels() {
    return Made().back();
}

} // namespace media
