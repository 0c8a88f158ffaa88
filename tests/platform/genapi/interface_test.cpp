// The arithmetic and the smart pointers that live in the interface's headers, used as a maker of ports would.
#include <gtest/gtest.h>

#include "GenApi/GenApi.h"

using namespace GenApi_3_0;

namespace {

class FixedPort final : public IPort {
public:
    explicit FixedPort(EAccessMode mode) : m_mode(mode) {}
    EAccessMode GetAccessMode() const override { return m_mode; }
    void Read(void*, int64_t address, int64_t) override {
        throw TIMEOUT_EXCEPTION("register 0x%llx", static_cast<unsigned long long>(address));
    }
    void Write(const void*, int64_t, int64_t) override {}

private:
    EAccessMode m_mode;
};

} // namespace

TEST(GenApiInterface, CombinesAccessModes) {
    // NI before NA; reading and writing only where both allow it.
    const EAccessMode expected[5][5] = {
        {NI, NI, NI, NI, NI}, {NI, NA, NA, NA, NA}, {NI, NA, WO, NA, WO},
        {NI, NA, NA, RO, RO}, {NI, NA, WO, RO, RW},
    };
    for (const EAccessMode first : {NI, NA, WO, RO, RW})
        for (const EAccessMode second : {NI, NA, WO, RO, RW})
            EXPECT_EQ(expected[first][second], Combine(first, second)) << first << " " << second;
}

TEST(GenApiInterface, AnswersWhatAModeAllows) {
    struct Row {
        EAccessMode mode;
        bool implemented, available, readable, writable;
    };
    const Row rows[] = {
        {NI, false, false, false, false}, {NA, true, false, false, false}, {WO, true, true, false, true},
        {RO, true, true, true, false},    {RW, true, true, true, true},
    };
    for (const Row& row : rows) {
        FixedPort port(row.mode);
        EXPECT_EQ(row.implemented, IsImplemented(port)) << row.mode;
        EXPECT_EQ(row.available, IsAvailable(port)) << row.mode;
        EXPECT_EQ(row.readable, IsReadable(port)) << row.mode;
        EXPECT_EQ(row.writable, IsWritable(port)) << row.mode;
        EXPECT_EQ(row.writable, IsWritable(&port)) << row.mode;
    }
    EXPECT_FALSE(IsReadable(static_cast<const IBase*>(nullptr)));
}

TEST(GenApiInterface, NumbersOfTheAccessModesAreFixed) {
    EXPECT_EQ(0, NI);
    EXPECT_EQ(1, NA);
    EXPECT_EQ(2, WO);
    EXPECT_EQ(3, RO);
    EXPECT_EQ(4, RW);
}

TEST(GenApiInterface, VisibilityAndCachingCombineToTheStricter) {
    EXPECT_EQ(Guru, Combine(Expert, Guru));
    EXPECT_TRUE(IsVisible(Expert, Expert));
    EXPECT_FALSE(IsVisible(Invisible, Guru));
    EXPECT_EQ(NoCache, CombineCachingMode(WriteThrough, NoCache));
    EXPECT_EQ(WriteAround, CombineCachingMode(WriteThrough, WriteAround));
    EXPECT_EQ(WriteThrough, CombineCachingMode(WriteThrough, WriteThrough));
}

TEST(GenApiInterface, PointersAskForTheInterface) {
    FixedPort port(RW);
    IBase* base = &port;
    CPortPtr asPort(base);
    ASSERT_TRUE(asPort.IsValid());
    EXPECT_THROW(asPort->Read(nullptr, 0x10, 4), GenICam_3_0::TimeoutException);
    CIntegerPtr asInteger(base);
    EXPECT_FALSE(asInteger.IsValid());
    EXPECT_THROW(asInteger->GetValue(), GenICam_3_0::LogicalErrorException);
    EXPECT_TRUE(IsReadable(asPort));
    EXPECT_FALSE(IsReadable(asInteger));
    EXPECT_EQ(nullptr, static_cast<IInteger*>(asInteger));
    EXPECT_TRUE(asPort ? true : false);
    asPort = nullptr;
    EXPECT_TRUE(asPort == nullptr);
    EXPECT_THROW(*asPort, GenICam_3_0::LogicalErrorException);
}
