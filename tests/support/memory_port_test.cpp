#include "support/MemoryPort.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <future>
#include <string>
#include <vector>

#include "Base/GCException.h"

namespace {

using GenICam_3_0::GenericException;
using GenICam_3_0::RuntimeException;
using support::MemoryPort;
using Bytes = std::vector<std::uint8_t>;

Bytes ReadBytes(MemoryPort& port, std::int64_t address, std::size_t length) {
    Bytes bytes(length, 0xEE);
    port.Read(bytes.data(), address, static_cast<std::int64_t>(length));
    return bytes;
}

void WriteBytes(MemoryPort& port, std::int64_t address, const Bytes& bytes) {
    port.Write(bytes.data(), address, static_cast<std::int64_t>(bytes.size()));
}

TEST(MemoryPort, KeepsWhatIsWrittenAcrossPagesAndReadsZeroElsewhere) {
    MemoryPort port;
    WriteBytes(port, 254, {1, 2, 3, 4});
    EXPECT_EQ(ReadBytes(port, 252, 8), (Bytes{0, 0, 1, 2, 3, 4, 0, 0}));
    EXPECT_EQ(port.Load(254, 4), (Bytes{1, 2, 3, 4}));
    EXPECT_EQ(ReadBytes(port, 0x7FFFFFFFFFFFFFF0, 4), (Bytes{0, 0, 0, 0}));
    WriteBytes(port, -4, {9, 9, 9, 9});
    EXPECT_EQ(ReadBytes(port, -4, 4), (Bytes{9, 9, 9, 9}));
}

TEST(MemoryPort, StoresIntegersInBothOrders) {
    MemoryPort port;
    port.StoreInteger(0, 4, 0x01020304);
    port.StoreInteger(4, 2, 0x0506, MemoryPort::Order::Little);
    EXPECT_EQ(port.Load(0, 6), (Bytes{1, 2, 3, 4, 6, 5}));
    EXPECT_EQ(port.LoadInteger(0, 4), 0x01020304U);
    EXPECT_EQ(port.LoadInteger(4, 2, MemoryPort::Order::Little), 0x0506U);
    port.StoreText(0, 6, "ab");
    EXPECT_EQ(port.Load(0, 6), (Bytes{'a', 'b', 0, 0, 0, 0}));
}

TEST(MemoryPort, CountsAndRecordsEachAccess) {
    MemoryPort port(Bytes{7, 8}, 16);
    ReadBytes(port, 16, 2);
    WriteBytes(port, 20, {5});
    EXPECT_EQ(port.Reads(), 1U);
    EXPECT_EQ(port.Writes(), 1U);
    const auto accesses = port.Accesses();
    ASSERT_EQ(accesses.size(), 2U);
    EXPECT_FALSE(accesses[0].write);
    EXPECT_EQ(accesses[0].address, 16);
    EXPECT_EQ(accesses[0].bytes, (Bytes{7, 8}));
    EXPECT_TRUE(accesses[1].write);
    EXPECT_EQ(accesses[1].bytes, (Bytes{5}));
    port.Forget();
    port.Record(false);
    ReadBytes(port, 0, 1);
    EXPECT_EQ(port.Reads(), 1U);
    EXPECT_TRUE(port.Accesses().empty());
}

TEST(MemoryPort, FailsAsOftenAsAsked) {
    MemoryPort port;
    port.FailReads(2, "no answer");
    for (int i = 0; i < 2; ++i) {
        try {
            ReadBytes(port, 0, 4);
            FAIL() << "did not throw";
        } catch (const RuntimeException& error) {
            EXPECT_STREQ(error.GetDescription(), "no answer");
        }
    }
    EXPECT_EQ(ReadBytes(port, 0, 1), Bytes{0});
    port.FailWrites(1);
    EXPECT_THROW(WriteBytes(port, 0, {1}), GenericException);
    EXPECT_EQ(port.Load(0, 1), Bytes{0});
    EXPECT_EQ(port.Reads() + port.Writes(), 4U);
}

TEST(MemoryPort, HooksSeeAccessesAndMayThrow) {
    MemoryPort port;
    std::vector<std::int64_t> seen;
    port.OnAccess([&](bool write, std::int64_t address, std::int64_t length) {
        seen.insert(seen.end(), {write ? 1 : 0, address, length});
        if (address == 100) {
            throw TIMEOUT_EXCEPTION("too slow");
        }
    });
    port.OnWritten([&](std::int64_t address, std::int64_t) { port.StoreInteger(address, 1, 0xAA); });
    WriteBytes(port, 8, {1});
    EXPECT_EQ(port.LoadInteger(8, 1), 0xAAU);
    EXPECT_THROW(ReadBytes(port, 100, 4), GenICam_3_0::TimeoutException);
    EXPECT_EQ(seen, (std::vector<std::int64_t>{1, 8, 1, 0, 100, 4}));
}

TEST(MemoryPort, BlocksUntilReleased) {
    MemoryPort port(Bytes{3});
    port.Block();
    auto read = std::async(std::launch::async, [&] { return ReadBytes(port, 0, 1); });
    ASSERT_TRUE(port.WaitForBlocked());
    EXPECT_EQ(read.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
    port.Unblock();
    EXPECT_EQ(read.get(), Bytes{3});
}

TEST(MemoryPort, TellsTheAccessModeThatItIsGiven) {
    MemoryPort port;
    EXPECT_EQ(port.GetAccessMode(), GenApi_3_0::RW);
    port.SetAccessMode(GenApi_3_0::NA);
    EXPECT_EQ(port.GetAccessMode(), GenApi_3_0::NA);
}

} // namespace
