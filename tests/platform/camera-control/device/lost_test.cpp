// Cameras that die or are taken away while they are open: in each state, with each kind of waiting caller.
#include <array>
#include <atomic>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "Base/GCException.h"
#include "StreamRig.h"
#include "support/HeldUp.h"

namespace kolt::test {
namespace {

// Promised are 2 s for the message and 0.3 s for the closing; a busy machine gets some more, and what it took
// from the process altogether.
constexpr double kMessageMs = 3000;
constexpr double kCloseMs = 1500;

class Lost : public StreamRig {
protected:
    Lost() {
        EXPECT_EQ(OV_CC_RegisterExceptionCallBack(*handle_, Messages::callback, &messages_), OV_STATUS_OK);
    }
#ifdef __SANITIZE_THREAD__
    // At the end of a process the library doesn't wait for the remains of dead cameras; the sanitizer takes
    // their threads for forgotten ones.
    ~Lost() override {
        handle_.reset();
        EXPECT_EQ(OVX_CC_WaitIdle(60000), OV_STATUS_OK);
    }
#endif
    void die() {
        setFaults([](vcam::Faults& faults) { faults.silent = true; });
        died_ = heldUp_.mark();
    }
    void expectOneMessageInTime() {
        ASSERT_TRUE(messages_.waitFor(1));
        const double took = heldUp_.tookSince(died_, messages_.firstAt());
        std::printf("           message after %.0f ms\n", took);
        EXPECT_LT(took, kMessageMs);
        EXPECT_EQ(messages_.all(), std::vector<std::uint32_t>{OV_EXCEPTION_DISCONNECT});
        EXPECT_NE(messages_.thread(), std::this_thread::get_id());
    }
    void expectQuickClose() {
        const auto begun = heldUp_.mark();
        EXPECT_EQ(OV_CC_CloseDevice(*handle_), OV_STATUS_OK);
        const double took = heldUp_.tookSince(begun);
        std::printf("           closed in %.0f ms\n", took);
        EXPECT_LT(took, kCloseMs);
    }
    static GenICam_3_0::gcstring readFailure(GenApi_3_0::IPort& port) {
        std::array<std::uint8_t, 4> bytes{};
        try {
            port.Read(bytes.data(), 0x48, 4);
        } catch (const GenICam_3_0::AccessException& exception) {
            return exception.GetDescription();
        }
        return "";
    }

    Messages messages_;
    HeldUp heldUp_;
    HeldUp::Moment died_;
};

INSTANTIATE_TEST_SUITE_P(Roads, Lost, testing::Values(Road::plainSocket, Road::packetSocket), roadName);

TEST_P(Lost, IdleCamera) {
    die();
    expectOneMessageInTime();
    // Whatever is asked of it now is answered at once.
    const auto begun = heldUp_.mark();
    EXPECT_EQ(OV_CC_StartGrabbing(*handle_), OV_STATUS_PRECONDITION);
    EXPECT_EQ(OV_CC_StopGrabbing(*handle_), OV_STATUS_CALL_ORDER);
    EXPECT_NE(readFailure(handle_->port()), "");
    EXPECT_EQ(handle_->port().GetAccessMode(), GenApi_3_0::NA);
    EXPECT_LE(OV_CC_GetOptimalPacketSize(*handle_), 0);
    EXPECT_EQ(handle_->open(), OV_STATUS_CALL_ORDER) << "it must be closed first";
    std::uint32_t length = 0;
    EXPECT_EQ(OV_XML_GetGenICamXML(*handle_, nullptr, 0, &length), OV_STATUS_BUFFER_FULL) << "still at hand";
    EXPECT_LT(heldUp_.tookSince(begun), kCloseMs);
    expectQuickClose();
    EXPECT_EQ(handle_->open(), OV_STATUS_NETWORK);
}

TEST_P(Lost, WhileAFrameIsWaitedFor) {
    start();
    ASSERT_EQ(fetch(*handle_).status, OV_STATUS_OK);
    std::atomic<bool> waiting{false};
    std::uint32_t status = 0;
    Clock::time_point ended;
    std::thread grabber([&] {
        waiting = true;
        do {
            status = fetch(*handle_, 60000).status;
        } while (status == OV_STATUS_OK); // those that had come are still brought
        ended = Clock::now();
    });
    ASSERT_TRUE(eventually([&] { return waiting.load(); }));
    die();
    grabber.join();
    EXPECT_EQ(status, OV_STATUS_PRECONDITION);
    EXPECT_LT(heldUp_.tookSince(died_, ended), kMessageMs);
    expectOneMessageInTime();
    EXPECT_EQ(OV_CC_StopGrabbing(*handle_), OV_STATUS_OK);
    expectQuickClose();
}

TEST_P(Lost, WhileARegisterIsRead) {
    std::atomic<bool> reading{false};
    std::array<std::thread, 3> readers; // one in the access, two behind it
    for (std::thread& reader : readers) {
        reader = std::thread([&] {
            reading = true;
            for (;;) {
                const GenICam_3_0::gcstring failure = readFailure(handle_->port());
                if (failure != "") {
                    return;
                }
            }
        });
    }
    ASSERT_TRUE(eventually([&] { return reading.load(); }));
    die();
    for (std::thread& reader : readers) {
        reader.join();
    }
    EXPECT_LT(heldUp_.tookSince(died_), kMessageMs) << "Aravis itself would hold each for 2.5 s";
    expectOneMessageInTime();
    expectQuickClose();
}

TEST_P(Lost, BeforeTheStartIsAnswered) {
    die();
    EXPECT_EQ(OV_CC_StartGrabbing(*handle_), OV_STATUS_PRECONDITION);
    EXPECT_LT(heldUp_.tookSince(died_), kMessageMs);
    expectOneMessageInTime();
    expectQuickClose();
}

TEST_P(Lost, BeforeTheStopIsAnswered) {
    start();
    ASSERT_EQ(fetch(*handle_).status, OV_STATUS_OK);
    die();
    EXPECT_EQ(OV_CC_StopGrabbing(*handle_), OV_STATUS_OK)
        << "nothing is received any more, and that was asked for";
    EXPECT_LT(heldUp_.tookSince(died_), kMessageMs);
    expectOneMessageInTime();
    expectQuickClose();
}

TEST_P(Lost, WhileThePacketSizeIsLookedFor) {
    std::atomic<bool> asking{false};
    std::int32_t size = 0;
    std::thread asker([&] {
        asking = true;
        do {
            size = OV_CC_GetOptimalPacketSize(*handle_);
        } while (size > 0);
    });
    ASSERT_TRUE(eventually([&] { return asking.load(); }));
    die();
    asker.join();
    EXPECT_LT(heldUp_.tookSince(died_), kMessageMs);
    expectOneMessageInTime();
    expectQuickClose();
}

// Nobody knows yet that it is dead; and nobody is told, as it is closed.
TEST_P(Lost, ClosedRightAfterItsDeath) {
    for (const bool grabbing : {false, true}) {
        if (grabbing) {
            ASSERT_EQ(handle_->open(), OV_STATUS_OK);
            start();
        }
        die();
        expectQuickClose();
        EXPECT_FALSE(messages_.waitFor(1, milliseconds(1000)));
        camera_.Stop();
        camera_.Start();
    }
}

TEST_P(Lost, WhatIsLeftOfItGoesInTheBackground) {
    ASSERT_EQ(OV_CC_CloseDevice(*handle_), OV_STATUS_OK);
    ASSERT_EQ(OVX_CC_WaitIdle(20000), OV_STATUS_OK);
    const std::size_t threads = threadCount();
    const std::size_t descriptors = descriptorCount();
    ASSERT_EQ(handle_->open(), OV_STATUS_OK);
    start();
    die();
    expectQuickClose();
    EXPECT_GT(threadCount(), threads) << "Aravis still waits for answers";
    EXPECT_EQ(OVX_CC_WaitIdle(0), OV_STATUS_NO_DATA);
    EXPECT_EQ(OVX_CC_WaitIdle(60000), OV_STATUS_OK);
    EXPECT_TRUE(eventually([&] { return threadCount() == threads; }));
    EXPECT_EQ(descriptorCount(), descriptors);
}

TEST_P(Lost, DestroyedRightAfterItsDeath) {
    start();
    die();
    const auto begun = heldUp_.mark();
    handle_.reset();
    EXPECT_LT(heldUp_.tookSince(begun), kCloseMs);
    EXPECT_EQ(messages_.all().size(), 0U);
}

TEST_P(Lost, ControlIsTakenAwayByARestartOfTheCamera) {
    camera_.Stop();
    camera_.Start(); // at once: it answers every probe, but knows of no one who controls it
    died_ = heldUp_.mark();
    expectOneMessageInTime();
    expectQuickClose();
    EXPECT_EQ(handle_->open(), OV_STATUS_OK);
}

TEST_P(Lost, ControlIsTakenAwayAndHeldByAnother) {
    start();
    camera_.Stop();
    camera_.Start();
    died_ = heldUp_.mark();
    const Handle other(recordOf(camera_.Address()));
    ASSERT_EQ(other.open(), OV_STATUS_OK);
    expectOneMessageInTime();
    EXPECT_TRUE(camera_.IsControlled());
    expectQuickClose();
    EXPECT_TRUE(camera_.IsControlled()) << "the other's control is not touched";
    EXPECT_EQ(handle_->open(), OV_STATUS_ACCESS_DENIED);
}

TEST_P(Lost, TheCallbackMayClose) {
    std::uint32_t status = ~0U;
    double took = 0;
    messages_.runInside([&] {
        const auto begun = heldUp_.mark();
        status = OV_CC_CloseDevice(*handle_);
        took = heldUp_.tookSince(begun);
    });
    start();
    die();
    expectOneMessageInTime();
    EXPECT_EQ(status, OV_STATUS_OK);
    EXPECT_LT(took, kCloseMs);
    EXPECT_EQ(OV_CC_CloseDevice(*handle_), OV_STATUS_CALL_ORDER);
}

TEST_P(Lost, TheCallbackMayDestroyItsHandle) {
    void* handle = nullptr;
    const _OV_CC_DEVICE_INFO_ record = recordOf(camera_.Address());
    handle_.reset();
    ASSERT_EQ(OV_CC_CreateHandle(&handle, &record), OV_STATUS_OK);
    ASSERT_EQ(OV_CC_OpenDevice(handle, OV_ACCESS_EXCLUSIVE, 0), OV_STATUS_OK);
    ASSERT_EQ(OV_CC_RegisterExceptionCallBack(handle, Messages::callback, &messages_), OV_STATUS_OK);
    std::uint32_t status = ~0U;
    messages_.runInside([&] { status = OV_CC_DestroyHandle(handle); });
    ASSERT_EQ(OV_CC_StartGrabbing(handle), OV_STATUS_OK);
    die();
    expectOneMessageInTime();
    EXPECT_EQ(status, OV_STATUS_OK);
    EXPECT_EQ(OV_CC_DestroyHandle(handle), OV_STATUS_INVALID_HANDLE);
}

// As the program does it: the callback waits for the thread that fetches frames.
TEST_P(Lost, TheCallbackMayWaitForTheGrabber) {
    start();
    std::atomic<bool> stop{false};
    std::thread grabber([&] {
        while (!stop) {
            fetch(*handle_, 60000);
        }
    });
    messages_.runInside([&] {
        stop = true;
        grabber.join();
        EXPECT_EQ(OV_CC_StopGrabbing(*handle_), OV_STATUS_OK);
        EXPECT_EQ(OV_CC_RegisterExceptionCallBack(*handle_, nullptr, nullptr), OV_STATUS_OK);
    });
    die();
    expectOneMessageInTime();
    expectQuickClose();
}

TEST_P(Lost, ClosingAndCallbackMeet) {
    std::atomic<bool> entered{false};
    std::atomic<bool> inside{false};
    std::atomic<bool> closing{false};
    messages_.runInside([&] {
        inside = true;
        entered = true;
        EXPECT_TRUE(eventually([&] { return closing.load(); }));
        std::this_thread::sleep_for(milliseconds(50)); // the other thread's closing comes meanwhile
        const std::uint32_t status = OV_CC_CloseDevice(*handle_);
        EXPECT_TRUE(status == OV_STATUS_OK || status == OV_STATUS_CALL_ORDER);
        inside = false;
    });
    die();
    ASSERT_TRUE(eventually([&] { return entered.load(); }));
    closing = true;
    const std::uint32_t status = OV_CC_CloseDevice(*handle_);
    EXPECT_TRUE(status == OV_STATUS_OK || status == OV_STATUS_CALL_ORDER);
    EXPECT_FALSE(inside) << "the callback is over when the closing returns";
    EXPECT_TRUE(messages_.waitFor(1));
}

TEST_P(Lost, WithoutACallbackNothingIsToldUntilThereIsOne) {
    ASSERT_EQ(OV_CC_RegisterExceptionCallBack(*handle_, nullptr, nullptr), OV_STATUS_OK);
    die();
    ASSERT_TRUE(eventually([&] { return handle_->port().GetAccessMode() == GenApi_3_0::NA; }));
    EXPECT_EQ(messages_.all().size(), 0U);
    ASSERT_EQ(OV_CC_RegisterExceptionCallBack(*handle_, Messages::callback, &messages_), OV_STATUS_OK);
    ASSERT_TRUE(messages_.waitFor(1)) << "a loss between opening and registration is not kept back";
    EXPECT_EQ(messages_.all().size(), 1U);
}

TEST_P(Lost, AClosedCameraSendsNoMessage) {
    ASSERT_EQ(OV_CC_CloseDevice(*handle_), OV_STATUS_OK);
    die();
    EXPECT_FALSE(messages_.waitFor(1, milliseconds(1200)));
}

TEST_P(Lost, EachOpeningHasAMessageOfItsOwn) {
    for (std::size_t round = 1; round <= 2; ++round) {
        die();
        ASSERT_TRUE(messages_.waitFor(round));
        EXPECT_EQ(messages_.all().size(), round);
        expectQuickClose();
        camera_.Stop();
        camera_.Start();
        camera_.SetFaults({});
        ASSERT_EQ(handle_->open(), OV_STATUS_OK);
    }
}

class Alive : public Lost {
protected:
    void expectNoMessage() {
        EXPECT_EQ(messages_.all().size(), 0U);
        EXPECT_EQ(handle_->port().GetAccessMode(), GenApi_3_0::RW);
        EXPECT_TRUE(camera_.IsControlled());
    }
};

// How a stream is received makes no difference here; a plain socket is what a busy host hurts most.
INSTANTIATE_TEST_SUITE_P(Roads, Alive, testing::Values(Road::plainSocket), roadName);

TEST_P(Alive, AnIdleCameraIsKeptBeyondItsHeartbeatTimeOut) {
    EXPECT_FALSE(messages_.waitFor(1, milliseconds(4000)));
    expectNoMessage();
    EXPECT_EQ(camera_.GetCounters().heartbeatsExpired, 0U);
}

TEST_P(Alive, ACameraThatTakesItsTimeForARegisterIsNotDead) {
    for (const bool announce : {true, false}) {
        setFaults([&](vcam::Faults& faults) {
            faults.answerDelayMs = 400;
            faults.announcePending = announce;
        });
        for (int round = 0; round < 3; ++round) {
            EXPECT_EQ(readFailure(handle_->port()), "");
        }
        expectNoMessage();
    }
}

TEST_P(Alive, ACameraThatAnswersNothingElseWhileItWorksIsNotDead) {
    setFaults([](vcam::Faults& faults) { faults.answerDelayMs = 1100; });
    EXPECT_EQ(readFailure(handle_->port()), "");
    camera_.SetFaults({});
    EXPECT_FALSE(messages_.waitFor(1, milliseconds(1000)));
    expectNoMessage();
}

TEST_P(Alive, ABusyStreamOnABusyHostIsNotDead) {
    std::atomic<bool> stop{false};
    std::vector<std::thread> burners;
    for (unsigned core = 0; core < 2 * std::thread::hardware_concurrency(); ++core) {
        burners.emplace_back([&] {
            volatile std::uint64_t sum = 0;
            while (!stop) {
                sum = sum + 1;
            }
        });
    }
    start();
    const auto begun = Clock::now();
    int frames = 0;
    while (millisecondsSince(begun) < 3000) {
        frames += fetch(*handle_, 1000).status == OV_STATUS_OK ? 1 : 0;
        readFailure(handle_->port());
    }
    stop = true;
    for (std::thread& burner : burners) {
        burner.join();
    }
    EXPECT_GT(frames, 5);
    expectNoMessage();
}

} // namespace
} // namespace kolt::test
