#include "Registers/RegisterMemory.h"

#include <gtest/gtest.h>
#include <thread>

namespace {

using namespace vcam;

Bytes Be(uint32_t value) {
    Bytes bytes(4);
    Put32(bytes.data(), value);
    return bytes;
}

Status ReadInto(RegisterMemory& memory, uint32_t address, Bytes& to) {
    return memory.Read(address, to.data(), to.size());
}

Status WriteFrom(RegisterMemory& memory, uint32_t address, const Bytes& from, size_t* count = nullptr) {
    size_t written = 0;
    const Status status = memory.Write(address, from.data(), from.size(), written);
    if (count != nullptr)
        *count = written;
    return status;
}

TEST(RegisterMemory, KeepsNumbersBigEndian) {
    RegisterMemory memory;
    memory.Define32(0x100, 0x01020304, Access::ReadWrite);
    Bytes bytes(4);
    ASSERT_EQ(ReadInto(memory, 0x100, bytes), Status::Success);
    EXPECT_EQ(bytes, (Bytes{1, 2, 3, 4}));
    ASSERT_EQ(WriteFrom(memory, 0x100, {5, 6, 7, 8}), Status::Success);
    EXPECT_EQ(memory.Get32(0x100), 0x05060708u);
    memory.DefineDouble(0x200, 1.0, Access::ReadOnly);
    Bytes number(8);
    ASSERT_EQ(ReadInto(memory, 0x200, number), Status::Success);
    EXPECT_EQ(number, (Bytes{0x3F, 0xF0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(memory.GetDouble(0x200), 1.0);
}

struct AccessCase {
    const char* name;
    uint32_t address;
    size_t length;
    Status read, write;
};

class RegisterMemoryAccess : public testing::TestWithParam<AccessCase> {};

TEST_P(RegisterMemoryAccess, IsChecked) {
    RegisterMemory memory;
    memory.Define32(0x10, 1, Access::ReadOnly);
    memory.Define32(0x14, 2, Access::ReadWrite);
    memory.Define32(0x18, 3, Access::WriteOnly);
    memory.DefineString(0x20, 16, "text", Access::ReadWrite);
    const AccessCase& c = GetParam();
    Bytes bytes(c.length);
    EXPECT_EQ(ReadInto(memory, c.address, bytes), c.read);
    EXPECT_EQ(WriteFrom(memory, c.address, bytes), c.write);
}

INSTANTIATE_TEST_SUITE_P(
    All, RegisterMemoryAccess,
    testing::Values(AccessCase{"ReadOnly", 0x10, 4, Status::Success, Status::WriteProtect},
                    AccessCase{"ReadWrite", 0x14, 4, Status::Success, Status::Success},
                    AccessCase{"WriteOnly", 0x18, 4, Status::AccessDenied, Status::Success},
                    AccessCase{"TwoNeighbours", 0x10, 8, Status::Success, Status::WriteProtect},
                    AccessCase{"OddAddress", 0x12, 4, Status::BadAlignment, Status::BadAlignment},
                    AccessCase{"OddLength", 0x14, 3, Status::BadAlignment, Status::BadAlignment},
                    AccessCase{"Nothing", 0x14, 0, Status::InvalidParameter, Status::InvalidParameter},
                    AccessCase{"BeforeTheFirst", 0x0C, 4, Status::InvalidAddress, Status::InvalidAddress},
                    AccessCase{"InAHole", 0x1C, 4, Status::InvalidAddress, Status::InvalidAddress},
                    AccessCase{"IntoAHole", 0x18, 8, Status::InvalidAddress, Status::InvalidAddress},
                    AccessCase{"PartOfALongOne", 0x24, 8, Status::Success, Status::Success},
                    AccessCase{"BeyondTheLast", 0x2C, 8, Status::InvalidAddress, Status::InvalidAddress},
                    AccessCase{"FarAway", 0xFFFFFFFC, 8, Status::InvalidAddress, Status::InvalidAddress}),
    [](const auto& test) { return test.param.name; });

TEST(RegisterMemory, RefusesOverlapsAndOddSizes) {
    RegisterMemory memory;
    memory.Define(0x20, Bytes(16), Access::ReadWrite);
    EXPECT_THROW(memory.Define32(0x2C, 0, Access::ReadWrite), std::logic_error);
    EXPECT_THROW(memory.Define(0x1C, Bytes(8), Access::ReadWrite), std::logic_error);
    EXPECT_THROW(memory.Define(0x40, Bytes(3), Access::ReadWrite), std::logic_error);
    EXPECT_THROW(memory.Define(0x41, Bytes(4), Access::ReadWrite), std::logic_error);
    EXPECT_NO_THROW(memory.Define32(0x30, 0, Access::ReadWrite));
}

TEST(RegisterMemory, CheckSeesTheWholeRegisterAndStoresNothingWhenItRefuses) {
    RegisterMemory memory;
    RegisterHooks hooks;
    Bytes seen;
    hooks.check = [&seen](const Bytes& proposed) {
        seen = proposed;
        return Status::InvalidParameter;
    };
    bool written = false;
    hooks.written = [&written] { written = true; };
    memory.Define(0x10, {1, 2, 3, 4, 5, 6, 7, 8}, Access::ReadWrite, hooks);
    EXPECT_EQ(WriteFrom(memory, 0x14, {9, 9, 9, 9}), Status::InvalidParameter);
    EXPECT_EQ(seen, (Bytes{1, 2, 3, 4, 9, 9, 9, 9}));
    EXPECT_EQ(memory.GetBytes(0x10), (Bytes{1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_FALSE(written);
}

TEST(RegisterMemory, WriteOverSeveralStopsAtTheOneThatRefuses) {
    RegisterMemory memory;
    memory.Define32(0x10, 0, Access::ReadWrite);
    memory.Define32(0x14, 0, Access::ReadOnly);
    memory.Define32(0x18, 0, Access::ReadWrite);
    size_t written = 99;
    EXPECT_EQ(WriteFrom(memory, 0x10, {0, 0, 0, 1, 0, 0, 0, 2, 0, 0, 0, 3}, &written), Status::WriteProtect);
    EXPECT_EQ(written, 4u);
    EXPECT_EQ(memory.Get32(0x10), 1u);
    EXPECT_EQ(memory.Get32(0x18), 0u);
}

TEST(RegisterMemory, ReadHookRefreshesTheContent) {
    RegisterMemory memory;
    uint32_t count = 0;
    RegisterHooks hooks;
    hooks.beforeRead = [&] { memory.Set32(0x10, ++count); };
    memory.Define32(0x10, 0, Access::ReadOnly, hooks);
    Bytes bytes(4);
    ReadInto(memory, 0x10, bytes);
    ReadInto(memory, 0x10, bytes);
    EXPECT_EQ(bytes, Be(2));
    EXPECT_EQ(memory.Get32(0x10), 2u) << "the inner side runs no hook";
}

// A hook may wait for a thread that uses the memory: it would hang here if the lock were held.
TEST(RegisterMemory, HooksRunWithoutTheLock) {
    RegisterMemory memory;
    RegisterHooks hooks;
    const auto elsewhere = [&memory] {
        std::thread([&memory] { memory.Set32(0x20, memory.Get32(0x20) + 1); }).join();
    };
    hooks.beforeRead = elsewhere;
    hooks.written = elsewhere;
    hooks.check = [elsewhere](const Bytes&) {
        elsewhere();
        return Status::Success;
    };
    memory.Define32(0x10, 0, Access::ReadWrite, hooks);
    memory.Define32(0x20, 0, Access::ReadWrite);
    Bytes bytes(4);
    EXPECT_EQ(ReadInto(memory, 0x10, bytes), Status::Success);
    EXPECT_EQ(WriteFrom(memory, 0x10, bytes), Status::Success);
    EXPECT_EQ(memory.Get32(0x20), 3u);
}

TEST(RegisterMemory, StringsAreCutAndEndAtTheZero) {
    RegisterMemory memory;
    memory.DefineString(0x10, 8, "abc", Access::ReadWrite);
    EXPECT_EQ(memory.GetString(0x10), "abc");
    memory.SetString(0x10, "0123456789");
    EXPECT_EQ(memory.GetString(0x10), "01234567");
    memory.SetString(0x10, "x");
    EXPECT_EQ(memory.GetBytes(0x10), (Bytes{'x', 0, 0, 0, 0, 0, 0, 0}));
}

TEST(RegisterMemory, IsKeptAndRestoredAsAWhole) {
    RegisterMemory memory;
    memory.Define32(0x10, 1, Access::ReadOnly);
    memory.DefineString(0x20, 8, "abc", Access::ReadWrite);
    const auto before = memory.Contents();
    EXPECT_EQ(before.size(), 2u);
    memory.Set32(0x10, 9);
    memory.Replace(0x20, Bytes(16));
    memory.Restore(before);
    EXPECT_EQ(memory.Get32(0x10), 1u);
    EXPECT_EQ(memory.GetBytes(0x20).size(), 8u);
    EXPECT_EQ(memory.GetString(0x20), "abc");
    memory.Restore({{0x40, Bytes(4)}});
    EXPECT_EQ(memory.Contents(), before);
}

TEST(RegisterMemory, ReplaceChangesTheLengthButNeverOverlaps) {
    RegisterMemory memory;
    memory.Define(0x10, Bytes(4), Access::ReadOnly);
    memory.Define32(0x20, 7, Access::ReadOnly);
    memory.Replace(0x10, {1, 2, 3, 4, 5});
    EXPECT_EQ(memory.GetBytes(0x10), (Bytes{1, 2, 3, 4, 5, 0, 0, 0})) << "filled up to a multiple of four";
    EXPECT_THROW(memory.Replace(0x10, Bytes(20)), std::logic_error);
    EXPECT_THROW(memory.Replace(0x14, Bytes(4)), std::out_of_range);
}

} // namespace
