#include "Camera/CRecordFile.h"
#include "Camera/CWriteBehind.h"
#include "support/DiskDouble.h"

#include <QDataStream>
#include <QDir>
#include <QTemporaryDir>
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

constexpr auto kBlock = static_cast<int64_t>(CWriteBehind::kBlock);
constexpr auto kMost = static_cast<int64_t>(CWriteBehind::kMostBlocks) * kBlock;

bool Within(std::chrono::seconds patience, const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

class WriteBehind : public testing::Test {
protected:
    void SetUp() override {
        disk.Reset();
        name = folder.filePath("file").toUtf8();
        file = open(name.constData(), O_CREAT | O_RDWR, 0600);
        ASSERT_GE(file, 0);
    }
    void TearDown() override {
        disk.Reset();
        behind.Finish();
        close(file);
    }
    struct stat Status() const {
        struct stat status {};
        fstat(file, &status);
        return status;
    }
    int64_t Size() const { return Status().st_size; }

    // The next `length` bytes of the pattern; false when Write refuses.
    bool Write(int64_t length) {
        std::vector<uint8_t> data(static_cast<size_t>(length));
        CopyPattern(taken, data);
        if (!behind.Write(data.data(), data.size()))
            return false;
        taken += length;
        return true;
    }
    // Its period is a prime number, so that no block is like another one.
    static void CopyPattern(int64_t at, std::vector<uint8_t>& to) {
        static const std::vector<uint8_t> pattern = [] {
            std::vector<uint8_t> bytes(1048573);
            for (size_t i = 0; i < bytes.size(); ++i)
                bytes[i] = static_cast<uint8_t>(i * 7 + i / 251 + i / 65521);
            return bytes;
        }();
        auto from = static_cast<size_t>(at) % pattern.size();
        for (size_t done = 0; done < to.size(); from = 0) {
            const size_t part = std::min(to.size() - done, pattern.size() - from);
            std::memcpy(to.data() + done, pattern.data() + from, part);
            done += part;
        }
    }
    // The file is the first `length` bytes of what was written.
    void ExpectContent(int64_t length) const {
        ASSERT_EQ(Size(), length);
        std::vector<uint8_t> data, expected;
        for (int64_t at = 0; at < length; at += kBlock) {
            data.resize(static_cast<size_t>(std::min(kBlock, length - at)));
            expected.resize(data.size());
            ASSERT_EQ(pread(file, data.data(), data.size(), at), static_cast<ssize_t>(data.size()));
            CopyPattern(at, expected);
            ASSERT_TRUE(data == expected) << "in the block at " << at;
        }
    }
    void ExpectNoRoomBeyondTheEnd() const { EXPECT_LE(Status().st_blocks * 512, Size() + kBlock); }

    support::DiskDouble& disk = support::DiskDouble::Get();
    QTemporaryDir folder{QDir::currentPath() + "/write-behind-XXXXXX"};
    QByteArray name;
    int file = -1;
    int64_t taken = 0;
    CWriteBehind behind;
};

TEST_F(WriteBehind, TheFileIsWhatWasWrittenAndNoMore) {
    ASSERT_TRUE(behind.Start(file));
    // Odd pieces: within a block, over its edge, over several.
    for (const int64_t length : {int64_t{1}, int64_t{4095}, int64_t{0}, kBlock, 3 * kBlock + 17, kBlock - 1,
                                 int64_t{5013504}, int64_t{5013505}})
        ASSERT_TRUE(Write(length));
    behind.Finish();
    ExpectContent(taken);
    ExpectNoRoomBeyondTheEnd();
    EXPECT_EQ(behind.GetLost(), 0);
}

TEST_F(WriteBehind, WholeBlocksGoPastThePageCacheAndTheEndThroughIt) {
    const int probe = open(name.constData(), O_WRONLY | O_DIRECT);
    const bool known = probe >= 0;
    if (known)
        close(probe);
    ASSERT_TRUE(behind.Start(file));
    ASSERT_TRUE(Write(3 * kBlock + 100));
    ASSERT_TRUE(Within(std::chrono::seconds(20), [&] { return Size() == taken; }));
    behind.Finish();
    EXPECT_EQ(disk.DirectBytes(), known ? 3 * kBlock : 0);
    EXPECT_EQ(disk.DirectBytes() + disk.CachedBytes(), taken) << "each byte once";
    ExpectContent(taken);
}

TEST_F(WriteBehind, WhatFillsNoBlockGoesOutSoonAllTheSame) {
    ASSERT_TRUE(behind.Start(file));
    ASSERT_TRUE(Write(5000));
    EXPECT_TRUE(Within(std::chrono::seconds(20), [&] { return Size() == 5000; }));
    // The rest of such a block follows, and the next one is whole again.
    ASSERT_TRUE(Write(2 * kBlock));
    EXPECT_TRUE(Within(std::chrono::seconds(20), [&] { return Size() == taken; }));
    behind.Finish();
    ExpectContent(taken);
    EXPECT_EQ(disk.DirectBytes() + disk.CachedBytes(), taken) << "each byte once";
}

TEST_F(WriteBehind, ADiskThatStopsDoesNotStopTheWriter) {
    ASSERT_TRUE(behind.Start(file));
    disk.Stop();
    // Comes back although nothing is written.
    while (taken < kMost)
        ASSERT_TRUE(Write(kBlock));
    EXPECT_EQ(Size(), 0);
    disk.GoOn();
    behind.Finish();
    ExpectContent(kMost);
}

TEST_F(WriteBehind, BeyondThatTheWriterWaitsAndLosesNothing) {
    ASSERT_TRUE(behind.Start(file));
    disk.Stop();
    while (taken < kMost)
        ASSERT_TRUE(Write(kBlock));
    std::atomic<bool> back{false};
    std::thread writer([&] {
        EXPECT_TRUE(Write(kBlock + 5));
        back = true;
    });
    // It can't tell that it waits; but were it not to wait, this would show it most of the time.
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_FALSE(back);
    disk.GoOn();
    writer.join();
    behind.Finish();
    ExpectContent(kMost + kBlock + 5);
}

TEST_F(WriteBehind, AFileSystemWithoutDirectWrites) {
    disk.RefuseDirect();
    ASSERT_TRUE(behind.Start(file));
    for (int i = 0; i < 12; ++i) // far enough for what was written to leave the cache
        ASSERT_TRUE(Write(kBlock));
    ASSERT_TRUE(Within(std::chrono::seconds(20), [&] { return Size() == taken; }));
    behind.Finish();
    EXPECT_EQ(disk.DirectBytes(), 0);
    ExpectContent(taken);
}

TEST_F(WriteBehind, PartsOfWhatWasAskedAreGoneOnWith) {
    disk.ShortWrites(1000 * 1000);
    ASSERT_TRUE(behind.Start(file));
    ASSERT_TRUE(Write(2 * kBlock + 3));
    behind.Finish();
    ExpectContent(2 * kBlock + 3);
}

TEST_F(WriteBehind, AFailureIsToldByTheNextWriteAndCounted) {
    disk.FailFrom(2 * kBlock, EIO);
    ASSERT_TRUE(behind.Start(file));
    ASSERT_TRUE(Write(2 * kBlock + 10));
    EXPECT_TRUE(Within(std::chrono::seconds(20), [&] { return !behind.Write("x", 1); }));
    EXPECT_FALSE(Write(1)) << "for good";
    behind.Finish();
    ExpectContent(2 * kBlock);
    ExpectNoRoomBeyondTheEnd();
    EXPECT_GE(behind.GetLost(), 10);
}

TEST_F(WriteBehind, AFailureAtTheEndIsCounted) {
    disk.FailFrom(kBlock, EIO);
    ASSERT_TRUE(behind.Start(file));
    ASSERT_TRUE(Write(kBlock + 10));
    behind.Finish();
    ExpectContent(kBlock);
    EXPECT_EQ(behind.GetLost(), 10);
    // And is forgotten with the next file.
    disk.Reset();
    ASSERT_EQ(ftruncate(file, 0), 0);
    taken = 0;
    ASSERT_TRUE(behind.Start(file));
    ASSERT_TRUE(Write(10));
    behind.Finish();
    ExpectContent(10);
    EXPECT_EQ(behind.GetLost(), 0);
}

TEST_F(WriteBehind, AWriterThatWaitsLearnsOfTheFailure) {
    ASSERT_TRUE(behind.Start(file));
    disk.Stop();
    while (taken < kMost)
        ASSERT_TRUE(Write(kBlock));
    std::thread writer([&] { EXPECT_FALSE(Write(1)); });
    disk.FailFrom(0, EIO);
    disk.GoOn();
    writer.join();
    behind.Finish();
    EXPECT_EQ(Size(), 0);
    EXPECT_EQ(behind.GetLost(), kMost);
}

TEST_F(WriteBehind, WithoutRoomEachWriteTellsWhatCameOfIt) {
    disk.FailReserving(ENOSPC);
    disk.FailFrom(7000, ENOSPC);
    ASSERT_TRUE(behind.Start(file));
    ASSERT_TRUE(Write(7000));
    EXPECT_EQ(Size(), 7000) << "on its way before Write came back";
    EXPECT_FALSE(Write(1));
    behind.Finish();
    ExpectContent(7000);
    EXPECT_EQ(behind.GetLost(), 0) << "what Write refused isn't lost";
}

TEST_F(WriteBehind, AFileSystemThatReservesNothing) {
    disk.FailReserving(EOPNOTSUPP);
    ASSERT_TRUE(behind.Start(file));
    disk.Stop();
    ASSERT_TRUE(Write(2 * kBlock)) << "without a wait for the disk";
    disk.GoOn();
    behind.Finish();
    ExpectContent(2 * kBlock);
}

TEST_F(WriteBehind, AnEmptyFileKeepsNoRoom) {
    ASSERT_TRUE(behind.Start(file));
    behind.Finish();
    EXPECT_EQ(Size(), 0);
    EXPECT_EQ(Status().st_blocks, 0);
}

TEST_F(WriteBehind, AgainOnAnotherFileAndWithoutOne) {
    ASSERT_TRUE(behind.Start(file));
    ASSERT_TRUE(Write(2 * kBlock));
    const int second = open(folder.filePath("second").toUtf8().constData(), O_CREAT | O_RDWR, 0600);
    ASSERT_TRUE(behind.Start(second)); // ends the first
    ExpectContent(2 * kBlock);
    behind.Finish();
    behind.Finish();
    close(second);
    EXPECT_FALSE(behind.Start(-1));
    EXPECT_FALSE(behind.Write("x", 1));
    behind.Finish();
}

TEST_F(WriteBehind, OnlyRegularFiles) {
    const int null = open("/dev/null", O_WRONLY);
    EXPECT_FALSE(behind.Start(null));
    EXPECT_FALSE(behind.IsStarted());
    close(null);
}

TEST_F(WriteBehind, ARecordFileIsAQFileForADataStream) {
    const QString path = folder.filePath("stream.raw");
    {
        CRecordFile record(path);
        ASSERT_TRUE(record.open(QIODevice::WriteOnly));
        disk.Stop();
        QDataStream stream(&record);
        const QByteArray frame(5013504, 'a');
        EXPECT_EQ(stream.writeRawData(frame.constData(), frame.size()), frame.size());
        EXPECT_EQ(stream.writeRawData("xyz", 3), 3);
        EXPECT_EQ(record.pos(), frame.size() + 3);
        EXPECT_EQ(QFile(path).size(), 0) << "the disk stands still";
        disk.GoOn();
    }
    QFile read(path);
    ASSERT_TRUE(read.open(QIODevice::ReadOnly));
    EXPECT_EQ(read.readAll(), QByteArray(5013504, 'a') + "xyz");
    read.close();
    CRecordFile again(path);
    ASSERT_TRUE(again.open(QIODevice::WriteOnly)) << "what was there goes";
    ASSERT_TRUE(again.remove());
    EXPECT_FALSE(QFile::exists(path));
    CRecordFile nowhere(folder.filePath("no/such"));
    EXPECT_FALSE(nowhere.open(QIODevice::WriteOnly));
}

TEST_F(WriteBehind, ADeviceIsWrittenAtOnce) {
    CRecordFile full("/dev/full");
    ASSERT_TRUE(full.open(QIODevice::WriteOnly));
    QDataStream stream(&full);
    EXPECT_EQ(stream.writeRawData("x", 1), -1);
}

} // namespace
