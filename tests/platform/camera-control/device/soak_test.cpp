// Many openings, and many cameras that die and come back: nothing may be left of any of them.
//
// KOLT_SOAK=1 runs the long form: 1000 rounds of opening, 200 of dying.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <malloc.h>
#include <string>

#include <gtest/gtest.h>

#include "CameraRig.h"

namespace kolt::test {
namespace {

unsigned rounds(unsigned usual, unsigned soak) {
    return std::getenv("KOLT_SOAK") != nullptr ? soak : usual;
}

// Sanitizers keep freed memory for a while, and have their own search for leaks.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kMemoryTells = false;
#else
constexpr bool kMemoryTells = true;
#endif

// The least that the process holds at the ends of some rounds: more is the work of threads that are just
// ending.
struct Holdings {
    std::size_t threads = ~std::size_t{0};
    std::size_t descriptors = ~std::size_t{0};
    std::size_t residentKb = ~std::size_t{0};
    std::size_t heapKb = ~std::size_t{0};

    void look() {
        malloc_trim(0);
        threads = std::min(threads, threadCount());
        descriptors = std::min(descriptors, descriptorCount());
        residentKb = std::min(residentKb, residentKilobytes());
        heapKb = std::min<std::size_t>(heapKb, mallinfo2().uordblks / 1024);
    }
};

// Compares the last quarter of the rounds with the second one; in the first, caches of the C library and GLib
// fill, and former ports up to their limit.
class Watch {
public:
    explicit Watch(unsigned all) : all_(all) {}

    void roundEnds(unsigned round) {
        const unsigned quarter = 4 * round / all_;
        if (quarter == 1) {
            early_.look();
        } else if (quarter == 3) {
            late_.look();
        }
    }
    void conclude() {
        // A thread leaves /proc a moment after it was joined.
        EXPECT_TRUE(eventually([&] { return threadCount() <= early_.threads; })) << early_.threads;
        EXPECT_TRUE(eventually([&] { return descriptorCount() <= early_.descriptors; }))
            << early_.descriptors;
        late_.look();
        const double between = all_ / 2.0;
        const auto growth = [&](std::size_t before, std::size_t after) {
            return (static_cast<double>(after) - static_cast<double>(before)) / between;
        };
        const double resident = growth(early_.residentKb, late_.residentKb);
        const double heap = growth(early_.heapKb, late_.heapKb);
        std::printf(
            "           %u rounds, second to last quarter: threads %zu -> %zu, descriptors %zu -> %zu, "
            "resident %zu -> %zu kB (%.2f kB a round), heap %zu -> %zu kB (%.3f kB a round)\n",
            all_, early_.threads, late_.threads, early_.descriptors, late_.descriptors, early_.residentKb,
            late_.residentKb, resident, early_.heapKb, late_.heapKb, heap);
        if (kMemoryTells) {
            // A session, a thread, an XML or a frame in each round is far more. The slack is that of an
            // arena.
            EXPECT_LT(heap, 1 + 8000 / between);
            EXPECT_LT(resident, 2 + 16000 / between);
        }
    }

private:
    unsigned all_;
    Holdings early_;
    Holdings late_;
};

void grabOne(void* handle) {
    ASSERT_EQ(OV_CC_StartGrabbing(handle), OV_STATUS_OK);
    ASSERT_EQ(fetch(handle).status, OV_STATUS_OK);
}

TEST(Soak, OpeningAndClosingLeavesNothing) {
    vcam::VirtualCamera camera(smallCamera());
    camera.Start();
    const unsigned all = rounds(100, 1000);
    Watch watch(all);
    for (unsigned round = 0; round < all; ++round) {
        const Handle handle(recordOf(camera.Address()));
        ASSERT_EQ(handle.open(), OV_STATUS_OK) << round;
        ASSERT_EQ(OVX_CC_SetOption(handle, OVX_OPTION_PACKET_SOCKET, round / 4 % 2), OV_STATUS_OK);
        std::uint32_t version = 0;
        ASSERT_NO_THROW(handle.port().Read(&version, 0, 4)) << round;
        if (round % 4 == 1) {
            ASSERT_NO_FATAL_FAILURE(grabOne(handle)) << round;
        }
        if (round % 3 != 0) { // else the destruction closes
            ASSERT_EQ(OV_CC_CloseDevice(handle), OV_STATUS_OK) << round;
        }
        watch.roundEnds(round);
    }
    watch.conclude();
}

TEST(Soak, CamerasThatDieAndComeBackLeaveNothing) {
    vcam::VirtualCamera camera(smallCamera());
    camera.Start();
    const unsigned all = rounds(8, 200);
    Watch watch(all);
    for (unsigned round = 0; round < all; ++round) {
        Messages messages;
        const Handle handle(recordOf(camera.Address()));
        ASSERT_EQ(handle.open(), OV_STATUS_OK) << round;
        ASSERT_EQ(OVX_CC_SetOption(handle, OVX_OPTION_PACKET_SOCKET, round / 2 % 2), OV_STATUS_OK);
        ASSERT_EQ(OV_CC_RegisterExceptionCallBack(handle, Messages::callback, &messages), OV_STATUS_OK);
        if (round % 2 == 0) {
            ASSERT_NO_FATAL_FAILURE(grabOne(handle)) << round;
        }
        camera.Stop();
        if (round % 4 != 3) { // else it is closed before the death is known
            ASSERT_TRUE(messages.waitFor(1)) << round;
        }
        ASSERT_EQ(OV_CC_CloseDevice(handle), OV_STATUS_OK) << round;
        camera.Start(); // while the remains of the former opening still wait for its answers
        if (round + 1 == all || round % 10 == 9 || round < 4) {
            ASSERT_EQ(OVX_CC_WaitIdle(60000), OV_STATUS_OK) << round;
        }
        watch.roundEnds(round);
    }
    watch.conclude();
}

} // namespace
} // namespace kolt::test
