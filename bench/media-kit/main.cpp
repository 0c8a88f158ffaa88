#include "Measure.h"

#include <cstdio>
#include <cstdlib>

/* bench_media [ROUNDS]: prints what a conversion costs as a multiple of a memcpy that moves the same bytes.
 */
int main(int argc, char** argv) {
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 21;
    if (rounds < 1) {
        std::fprintf(stderr, "usage: bench_media [ROUNDS [FILTER]]\n");
        return 2;
    }
    BenchConversions(rounds, argc > 2 ? argv[2] : "");
    BenchCodecs(rounds, argc > 2 ? argv[2] : "");
    return 0;
}
