#include "FrameMailbox.h"

#include <gtest/gtest.h>

#include <poll.h>
#include <thread>

namespace {

bool IsReadable(int fd, int timeoutMs = 0) {
    pollfd entry = {fd, POLLIN, 0};
    return poll(&entry, 1, timeoutMs) == 1;
}

void Write(live::FrameMailbox& mailbox, uint64_t number) {
    live::Frame& frame = mailbox.Writing();
    frame.pixels.Reserve(4096);
    std::fill_n(frame.pixels.Data(), 4096, static_cast<uint8_t>(number));
    frame.number = number;
    mailbox.Publish();
}

TEST(FrameMailbox, IsEmptyAtFirst) {
    live::FrameMailbox mailbox;
    EXPECT_FALSE(IsReadable(mailbox.Fd()));
    EXPECT_EQ(mailbox.Take(), nullptr);
}

TEST(FrameMailbox, GivesTheNewestOnce) {
    live::FrameMailbox mailbox;
    Write(mailbox, 1);
    Write(mailbox, 2);
    Write(mailbox, 3);
    EXPECT_TRUE(IsReadable(mailbox.Fd()));
    EXPECT_EQ(mailbox.Take()->number, 3U);
    EXPECT_FALSE(IsReadable(mailbox.Fd()));
    EXPECT_EQ(mailbox.Take(), nullptr);
    Write(mailbox, 4);
    EXPECT_EQ(mailbox.Take()->number, 4U);
}

TEST(FrameMailbox, AFrameInUseIsNotWrittenOver) {
    live::FrameMailbox mailbox;
    Write(mailbox, 1);
    const live::Frame* taken = mailbox.Take();
    for (uint64_t number = 2; number < 10; ++number)
        Write(mailbox, number);
    EXPECT_EQ(taken->number, 1U);
    EXPECT_EQ(taken->pixels.Data()[4095], 1);
}

TEST(FrameMailbox, ForgetsWhatWasNotTaken) {
    live::FrameMailbox mailbox;
    Write(mailbox, 1);
    mailbox.Empty();
    EXPECT_FALSE(IsReadable(mailbox.Fd()));
    EXPECT_EQ(mailbox.Take(), nullptr);
}

TEST(FrameMailbox, BetweenTwoThreadsFramesAreWholeAndInOrder) {
    live::FrameMailbox mailbox;
    constexpr uint64_t last = 20000;
    std::thread writer([&mailbox] {
        for (uint64_t number = 1; number <= last; ++number)
            Write(mailbox, number);
    });
    uint64_t newest = 0;
    while (newest < last) {
        ASSERT_TRUE(IsReadable(mailbox.Fd(), 10000));
        const live::Frame* frame = mailbox.Take();
        if (frame == nullptr)
            continue;
        ASSERT_GT(frame->number, newest);
        newest = frame->number;
        ASSERT_EQ(frame->pixels.Data()[0], static_cast<uint8_t>(newest));
        ASSERT_EQ(frame->pixels.Data()[4095], static_cast<uint8_t>(newest));
    }
    writer.join();
}

TEST(FrameBuffer, GrowsAndNeverShrinks) {
    live::FrameBuffer buffer;
    EXPECT_EQ(buffer.Capacity(), 0U);
    buffer.Reserve(100);
    EXPECT_EQ(buffer.Capacity(), 100U);
    const uint8_t* before = buffer.Data();
    buffer.Reserve(50);
    EXPECT_EQ(buffer.Data(), before);
    buffer.Reserve(200);
    EXPECT_EQ(buffer.Capacity(), 200U);
}

} // namespace
