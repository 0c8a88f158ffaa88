#include "Camera/CWriteBehind.h"

#include <QTemporaryDir>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr int64_t kBlock = int64_t{4} << 20;

class WriteBehind : public testing::Test {
protected:
    void SetUp() override {
        file = open(folder.filePath("file").toUtf8().constData(), O_CREAT | O_RDWR, 0600);
        ASSERT_GE(file, 0);
    }
    void TearDown() override { close(file); }
    struct stat Status() const {
        struct stat status {};
        fstat(file, &status);
        return status;
    }
    void Write(int64_t blocks) {
        std::vector<char> block(kBlock);
        for (int64_t i = 0; i < blocks; ++i) {
            block[0] = static_cast<char>(i);
            ASSERT_EQ(write(file, block.data(), kBlock), kBlock);
            behind.OnWritten(kBlock);
        }
    }

    QTemporaryDir folder;
    int file = -1;
    CWriteBehind behind;
};

TEST_F(WriteBehind, TheFileIsWhatWasWrittenAndNoMore) {
    behind.Start(file);
    // More than may lie in the cache, so that the writer meets every wait.
    constexpr int64_t kBlocks = 80;
    Write(kBlocks);
    behind.Finish();
    EXPECT_EQ(Status().st_size, kBlocks * kBlock);
    EXPECT_LE(Status().st_blocks * 512, (kBlocks + 1) * kBlock) << "reserved room is given back";
    for (int64_t i = 0; i < kBlocks; ++i) {
        char first = 99;
        ASSERT_EQ(pread(file, &first, 1, i * kBlock), 1);
        EXPECT_EQ(first, static_cast<char>(i));
    }
}

TEST_F(WriteBehind, AnEmptyFileKeepsNoRoom) {
    behind.Start(file);
    behind.Finish();
    EXPECT_EQ(Status().st_size, 0);
    EXPECT_EQ(Status().st_blocks, 0);
}

TEST_F(WriteBehind, AgainOnAnotherFileAndWithoutOne) {
    behind.Start(file);
    Write(2);
    const int second = open(folder.filePath("second").toUtf8().constData(), O_CREAT | O_RDWR, 0600);
    behind.Start(second); // ends the first
    EXPECT_EQ(Status().st_size, 2 * kBlock);
    behind.Finish();
    behind.Finish();
    close(second);
    behind.Start(-1);
    behind.OnWritten(kBlock);
    behind.Finish();
}

TEST_F(WriteBehind, AFileThatTakesNoAdvice) {
    const int null = open("/dev/null", O_WRONLY);
    behind.Start(null);
    for (int i = 0; i < 100; ++i)
        behind.OnWritten(kBlock);
    behind.Finish();
    close(null);
}

} // namespace
