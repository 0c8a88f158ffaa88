#include "MediaKit/Kernels.h"

namespace media {

std::vector<const Kernels*> AllKernels() {
    return {&PlainKernels()};
}

const Kernels& BestKernels() {
    static const Kernels& best = *AllKernels().back();
    return best;
}

} // namespace media
