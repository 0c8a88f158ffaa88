// The finder's additions to the contract.
#pragma GCC visibility push(default)
#include "OvCameraControlX.h"
#pragma GCC visibility pop

#include <algorithm>
#include <cstring>

#include "Camera/Boundary/OvStatus.h"
#include "find/DeviceFinder.h"
#include "find/DiscoverySettings.h"
#include "find/Finder.h"

namespace cc = kolt::cc;

uint32_t OVX_CC_GetFinderStatistics(OVX_CC_FINDER_STATISTICS* statistics) {
    if (statistics == nullptr || statistics->size < 8)
        return OV_STATUS_INVALID_PARAMETER;
    const cc::FinderStatistics seen = cc::finderStatistics();
    OVX_CC_FINDER_STATISTICS all{};
    all.size = statistics->size;
    all.calls = seen.calls;
    all.found = seen.found;
    all.beyondLimit = seen.beyondLimit;
    all.usbUnreadable = seen.usbUnreadable;
    all.failedSends = seen.failedSends;
    all.droppedAnswers = seen.dropped.total();
    all.malformedAnswers = seen.dropped.tooShort + seen.dropped.wrongLength;
    all.foreignAnswers = seen.dropped.wrongCommand + seen.dropped.wrongId + seen.dropped.wrongSource;
    std::memcpy(statistics, &all, std::min<std::size_t>(statistics->size, sizeof all));
    return OV_STATUS_OK;
}

uint32_t OVX_CC_SetDiscovery(const char* interfaces, const char* addresses) {
    return cc::withoutRaising([&] {
        cc::setDiscoverySettings(cc::parseDiscoverySettings(interfaces == nullptr ? "" : interfaces,
                                                            addresses == nullptr ? "" : addresses));
        return OV_STATUS_OK;
    });
}
