#include "find/DropCounters.h"

namespace kolt::cc {

void DropCounters::count(Verdict verdict) {
    switch (verdict) {
    case Verdict::accepted:
        break;
    case Verdict::tooShort:
        ++tooShort;
        break;
    case Verdict::wrongLength:
        ++wrongLength;
        break;
    case Verdict::wrongCommand:
        ++wrongCommand;
        break;
    case Verdict::wrongId:
        ++wrongId;
        break;
    }
}

DropCounters& DropCounters::operator+=(const DropCounters& other) {
    tooShort += other.tooShort;
    wrongLength += other.wrongLength;
    wrongCommand += other.wrongCommand;
    wrongId += other.wrongId;
    wrongSource += other.wrongSource;
    errorStatus += other.errorStatus;
    flood += other.flood;
    return *this;
}

} // namespace kolt::cc
