// How bytes at an address become numbers and texts, and back.
#include <gmock/gmock.h>

#include <limits>

#include "platform/genapi/RuleMap.h"

namespace {

using namespace rules;
using Bytes = std::vector<std::uint8_t>;
constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();

struct IntegerRow {
    const char* name;
    const char* kind;
    int length;
    const char* more; // sign, endianess, bits
    Bytes bytes;
    std::int64_t value;
    std::int64_t minimum;
    std::int64_t maximum;
};

#define BIG "<Endianess>BigEndian</Endianess>"
#define LITTLE "<Endianess>LittleEndian</Endianess>"
#define SIGNED "<Sign>Signed</Sign>"
#define UNSIGNED "<Sign>Unsigned</Sign>"
#define BITS(lsb, msb) "<LSB>" #lsb "</LSB><MSB>" #msb "</MSB>"

class IntegerRegisterRule : public testing::TestWithParam<IntegerRow> {};

TEST_P(IntegerRegisterRule, ReadsWritesAndHasARange) {
    const IntegerRow& row = GetParam();
    RuleMap rule(Node(row.kind, "X", At(16, row.length) + row.more));
    rule.port.Store(16, row.bytes);
    const CIntegerPtr x = rule.Int("X");
    EXPECT_EQ(x->GetValue(), row.value);
    EXPECT_EQ(x->GetMin(), row.minimum);
    EXPECT_EQ(x->GetMax(), row.maximum);
    EXPECT_EQ(x->GetInc(), 1);
    rule.port.Store(16, Bytes(row.bytes.size(), 0));
    rule.Get("X")->InvalidateNode();
    x->SetValue(row.value);
    EXPECT_EQ(x->GetValue(false, true), row.value);
    if (std::string(row.kind) == "IntReg") {
        EXPECT_EQ(rule.port.Load(16, row.bytes.size()), row.bytes);
    }
    if (row.maximum < kMax) {
        EXPECT_THROW(x->SetValue(row.maximum + 1), GenICam_3_0::OutOfRangeException);
    }
    if (row.minimum > kMin) {
        EXPECT_THROW(x->SetValue(row.minimum - 1), GenICam_3_0::OutOfRangeException);
    }
    EXPECT_EQ(x->GetValue(false, true), row.value);
}

INSTANTIATE_TEST_SUITE_P(
    IntReg, IntegerRegisterRule,
    testing::Values( //
        IntegerRow{"OneByte", "IntReg", 1, UNSIGNED BIG, {0x80}, 128, 0, 255},
        IntegerRow{"OneByteSigned", "IntReg", 1, SIGNED BIG, {0x80}, -128, -128, 127},
        IntegerRow{"TwoBig", "IntReg", 2, UNSIGNED BIG, {0x81, 0x02}, 0x8102, 0, 65535},
        IntegerRow{"TwoLittle", "IntReg", 2, UNSIGNED LITTLE, {0x81, 0x02}, 0x0281, 0, 65535},
        IntegerRow{"TwoBigSigned", "IntReg", 2, SIGNED BIG, {0xFF, 0xFE}, -2, -32768, 32767},
        IntegerRow{"TwoLittleSigned", "IntReg", 2, SIGNED LITTLE, {0xFE, 0xFF}, -2, -32768, 32767},
        IntegerRow{"ThreeBig", "IntReg", 3, UNSIGNED BIG, {1, 2, 3}, 0x010203, 0, 0xFFFFFF},
        IntegerRow{"FourBig", "IntReg", 4, UNSIGNED BIG, {0xFF, 0, 0, 1}, 0xFF000001, 0, 0xFFFFFFFF},
        IntegerRow{"FourLittle", "IntReg", 4, UNSIGNED LITTLE, {1, 0, 0, 0xFF}, 0xFF000001, 0, 0xFFFFFFFF},
        IntegerRow{
            "FourSigned", "IntReg", 4, SIGNED BIG, {0x80, 0, 0, 0}, -2147483648LL, -2147483648LL, 2147483647},
        IntegerRow{
            "FiveLittle", "IntReg", 5, UNSIGNED LITTLE, {1, 2, 3, 4, 5}, 0x0504030201, 0, 0xFFFFFFFFFF},
        IntegerRow{
            "SixBig", "IntReg", 6, UNSIGNED BIG, {0, 1, 2, 3, 4, 5}, 0x000102030405, 0, 0xFFFFFFFFFFFF},
        IntegerRow{"EightBig", "IntReg", 8, SIGNED BIG, {0x80, 0, 0, 0, 0, 0, 0, 0}, kMin, kMin, kMax},
        IntegerRow{"EightLittle",
                   "IntReg",
                   8,
                   SIGNED LITTLE,
                   {1, 0, 0, 0, 0, 0, 0, 0x40},
                   0x4000000000000001,
                   kMin,
                   kMax},
        IntegerRow{"SignAndOrderMissing", "IntReg", 4, "", {1, 0, 0, 0x80}, 0x80000001, 0, 0xFFFFFFFF}),
    [](const auto& tested) { return std::string(tested.param.name); });

// Bit 0 is the least significant bit of a little-endian register and the most significant one of a big-endian
// register.
INSTANTIATE_TEST_SUITE_P(
    MaskedIntReg, IntegerRegisterRule,
    testing::Values( //
        IntegerRow{"LittleLow", "MaskedIntReg", 4, BITS(0, 7) UNSIGNED LITTLE, {0xA5, 1, 2, 3}, 0xA5, 0, 255},
        IntegerRow{
            "LittleMiddle", "MaskedIntReg", 4, BITS(4, 11) UNSIGNED LITTLE, {0x5F, 0xFA, 0, 0}, 0xA5, 0, 255},
        IntegerRow{
            "LittleHigh", "MaskedIntReg", 4, BITS(24, 31) UNSIGNED LITTLE, {1, 2, 3, 0xA5}, 0xA5, 0, 255},
        IntegerRow{"LittleSwapped",
                   "MaskedIntReg",
                   4,
                   BITS(11, 4) UNSIGNED LITTLE,
                   {0x5F, 0xFA, 0, 0},
                   0xA5,
                   0,
                   255},
        IntegerRow{"BigLow", "MaskedIntReg", 4, BITS(31, 24) UNSIGNED BIG, {1, 2, 3, 0xA5}, 0xA5, 0, 255},
        IntegerRow{
            "BigMiddle", "MaskedIntReg", 4, BITS(27, 20) UNSIGNED BIG, {0, 0, 0xFA, 0x5F}, 0xA5, 0, 255},
        IntegerRow{"BigHigh", "MaskedIntReg", 4, BITS(7, 0) UNSIGNED BIG, {0xA5, 1, 2, 3}, 0xA5, 0, 255},
        IntegerRow{"BigSwapped", "MaskedIntReg", 4, BITS(0, 7) UNSIGNED BIG, {0xA5, 1, 2, 3}, 0xA5, 0, 255},
        IntegerRow{
            "LittleBit", "MaskedIntReg", 4, "<Bit>9</Bit>" UNSIGNED LITTLE, {0xFF, 0x02, 0, 0}, 1, 0, 1},
        IntegerRow{"BigBit", "MaskedIntReg", 4, "<Bit>31</Bit>" UNSIGNED BIG, {0, 0, 0, 1}, 1, 0, 1},
        IntegerRow{
            "BigBitOff", "MaskedIntReg", 4, "<Bit>0</Bit>" UNSIGNED BIG, {0x7F, 0xFF, 0xFF, 0xFF}, 0, 0, 1},
        IntegerRow{"Signed", "MaskedIntReg", 4, BITS(4, 7) SIGNED LITTLE, {0xE0, 0, 0, 0}, -2, -8, 7},
        IntegerRow{"SignedBig", "MaskedIntReg", 2, BITS(15, 12) SIGNED BIG, {0, 0x08}, -8, -8, 7},
        IntegerRow{"Whole",
                   "MaskedIntReg",
                   8,
                   BITS(0, 63) SIGNED LITTLE,
                   {0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF},
                   -2,
                   kMin,
                   kMax},
        IntegerRow{"OneByteReg", "MaskedIntReg", 1, BITS(2, 4) UNSIGNED LITTLE, {0x14}, 5, 0, 7}),
    [](const auto& tested) { return std::string(tested.param.name); });

TEST(MaskedRegisterRule, WritingOneFieldLeavesTheOthersOfTheAddress) {
    RuleMap rule(Node("MaskedIntReg", "Low", At(16) + BITS(31, 16) UNSIGNED BIG) +
                 Node("MaskedIntReg", "High", At(16) + BITS(15, 0) UNSIGNED BIG) +
                 Node("MaskedIntReg", "One", At(16) + "<Bit>31</Bit>" UNSIGNED BIG));
    rule.Put(16, 0x11112222);
    EXPECT_EQ(rule.Int("Low")->GetValue(), 0x2222);
    EXPECT_EQ(rule.Int("High")->GetValue(), 0x1111);
    rule.Int("Low")->SetValue(0x3333);
    EXPECT_EQ(rule.Memory(16), 0x11113333U);
    rule.Int("High")->SetValue(0x4444);
    EXPECT_EQ(rule.Memory(16), 0x44443333U);
    EXPECT_EQ(rule.Int("Low")->GetValue(), 0x3333);
    EXPECT_EQ(rule.Int("One")->GetValue(), 1);
    rule.Int("One")->SetValue(0);
    EXPECT_EQ(rule.Memory(16), 0x44443332U);
    EXPECT_EQ(rule.Int("Low")->GetValue(), 0x3332);
    EXPECT_EQ(rule.Int("High")->GetValue(), 0x4444);
}

TEST(MaskedRegisterRule, SeesWhatTheCameraChangedInTheOtherFields) {
    RuleMap rule(
        Node("MaskedIntReg", "Low", At(16) + "<Cachable>NoCache</Cachable>" BITS(31, 16) UNSIGNED BIG) +
        Node("MaskedIntReg", "High", At(16) + "<Cachable>NoCache</Cachable>" BITS(15, 0) UNSIGNED BIG));
    rule.Put(16, 0x11112222);
    EXPECT_EQ(rule.Int("Low")->GetValue(), 0x2222);
    rule.Put(16, 0x55552222);
    rule.Int("Low")->SetValue(0x3333);
    EXPECT_EQ(rule.Memory(16), 0x55553333U);
}

TEST(MaskedRegisterRule, AWriteOnlyRegisterIsWrittenWithoutReading) {
    RuleMap rule(Node("MaskedIntReg", "Low", At(16, 4, "WO") + BITS(31, 16) UNSIGNED BIG));
    rule.Int("Low")->SetValue(0x3333);
    EXPECT_EQ(rule.Memory(16) & 0xFFFF, 0x3333U);
    EXPECT_EQ(rule.port.Reads(), 0U);
}

TEST(StructRegRule, EntriesAreMaskedRegistersWithWhatTheyShare) {
    RuleMap rule(
        "<StructReg Comment=\"S\">" + At(16) +
        "<Endianess>LittleEndian</Endianess>"
        "<StructEntry "
        "Name=\"A\"><ToolTip>tip</ToolTip><Sign>Unsigned</Sign><LSB>0</LSB><MSB>3</MSB></StructEntry>"
        "<StructEntry Name=\"B\"><AccessMode>RO</AccessMode><Sign>Signed</Sign><Bit>4</Bit></StructEntry>"
        "<StructEntry Name=\"C\"><Sign>Unsigned</Sign><LSB>8</LSB><MSB>15</MSB></StructEntry></StructReg>");
    rule.port.Store(16, {0x1A, 0x77, 0, 0});
    EXPECT_EQ(rule.Int("A")->GetValue(), 10);
    EXPECT_EQ(rule.Int("B")->GetValue(), -1);
    EXPECT_EQ(rule.Int("C")->GetValue(), 0x77);
    EXPECT_STREQ(rule.Get("A")->GetToolTip().c_str(), "tip");
    EXPECT_EQ(rule.Mode("B"), RO);
    rule.Int("A")->SetValue(5);
    rule.Int("C")->SetValue(0x88);
    EXPECT_EQ(rule.port.Load(16, 4), (Bytes{0x15, 0x88, 0, 0}));
}

struct FloatRow {
    const char* name;
    int length;
    const char* more;
    Bytes bytes;
    double value;
};

class FloatRegisterRule : public testing::TestWithParam<FloatRow> {};

TEST_P(FloatRegisterRule, ReadsAndWrites) {
    const FloatRow& row = GetParam();
    RuleMap rule(Node("FloatReg", "X", At(16, row.length) + row.more));
    rule.port.Store(16, row.bytes);
    const CFloatPtr x = rule.Float("X");
    EXPECT_EQ(x->GetValue(), row.value);
    rule.port.Store(16, Bytes(row.bytes.size(), 0));
    x->SetValue(row.value);
    EXPECT_EQ(rule.port.Load(16, row.bytes.size()), row.bytes);
    EXPECT_FALSE(x->HasInc());
    EXPECT_THROW(x->GetInc(), GenICam_3_0::GenericException);
}

INSTANTIATE_TEST_SUITE_P(
    FloatReg, FloatRegisterRule,
    testing::Values( //
        FloatRow{"SingleBig", 4, BIG, {0x3F, 0xC0, 0, 0}, 1.5},
        FloatRow{"SingleLittle", 4, LITTLE, {0, 0, 0xC0, 0xBF}, -1.5},
        FloatRow{"DoubleBig", 8, BIG, {0x40, 0x09, 0x21, 0xFB, 0x54, 0x44, 0x2D, 0x18}, 3.141592653589793},
        FloatRow{"DoubleLittle", 8, LITTLE, {0, 0, 0, 0, 0, 0, 0xF8, 0x3F}, 1.5}),
    [](const auto& tested) { return std::string(tested.param.name); });

TEST(FloatRegisterRule, ASinglesRangeIsThatOfSingles) {
    RuleMap rule(Node("FloatReg", "X", At(16, 4) + BIG) + Node("FloatReg", "D", At(24, 8) + BIG));
    EXPECT_THROW(rule.Float("X")->SetValue(1e300), GenICam_3_0::OutOfRangeException);
    EXPECT_NO_THROW(rule.Float("D")->SetValue(1e300));
    EXPECT_LE(rule.Float("X")->GetMax(), 3.5e38);
    EXPECT_GT(rule.Float("D")->GetMax(), 1e300);
}

TEST(StringRegisterRule, EndsAtTheFirstZeroOrAtItsLength) {
    RuleMap rule(Node("StringReg", "X", At(16, 8)));
    rule.port.StoreText(16, 8, "abc");
    EXPECT_STREQ(rule.String("X")->GetValue().c_str(), "abc");
    rule.port.StoreText(16, 8, "abcdefgh");
    rule.port.StoreText(24, 8, "beyond");
    EXPECT_STREQ(rule.String("X")->GetValue(false, true).c_str(), "abcdefgh");
    EXPECT_EQ(rule.String("X")->GetMaxLength(), 8);
}

TEST(StringRegisterRule, WritesItsWholeLengthPaddedWithZeros) {
    RuleMap rule(Node("StringReg", "X", At(16, 8)));
    rule.port.Store(16, Bytes(12, 0xEE));
    rule.String("X")->SetValue("ab");
    EXPECT_EQ(rule.port.Load(16, 10), (Bytes{'a', 'b', 0, 0, 0, 0, 0, 0, 0xEE, 0xEE}));
    rule.String("X")->SetValue("12345678");
    EXPECT_EQ(rule.port.Load(16, 9), (Bytes{'1', '2', '3', '4', '5', '6', '7', '8', 0xEE}));
    EXPECT_THROW(rule.String("X")->SetValue("123456789"), GenICam_3_0::GenericException);
    EXPECT_STREQ(rule.String("X")->GetValue().c_str(), "12345678");
    rule.String("X")->SetValue("");
    EXPECT_STREQ(rule.String("X")->GetValue(false, true).c_str(), "");
}

TEST(StringRegisterRule, AStringOverItHasItsLengthAndValue) {
    RuleMap rule(Node("StringReg", "R", At(16, 8)) + Node("String", "X", "<pValue>R</pValue>") +
                 Node("String", "K", "<Value>constant</Value>"));
    rule.String("X")->SetValue("ab");
    EXPECT_STREQ(rule.String("R")->GetValue().c_str(), "ab");
    EXPECT_EQ(rule.String("X")->GetMaxLength(), 8);
    EXPECT_STREQ(rule.String("K")->GetValue().c_str(), "constant");
    rule.String("K")->SetValue("other");
    EXPECT_STREQ(rule.String("K")->GetValue().c_str(), "other");
}

TEST(PlainRegisterRule, MovesBytesAsTheyAre) {
    RuleMap rule(Node("Register", "X", At(16, 6)));
    rule.port.Store(16, {1, 2, 3, 4, 5, 6});
    const CRegisterPtr x = rule.Register("X");
    EXPECT_EQ(x->GetLength(), 6);
    EXPECT_EQ(x->GetAddress(), 16);
    Bytes bytes(6);
    x->Get(bytes.data(), 6);
    EXPECT_EQ(bytes, (Bytes{1, 2, 3, 4, 5, 6}));
    const Bytes other{9, 8, 7, 6, 5, 4};
    x->Set(other.data(), 6);
    EXPECT_EQ(rule.port.Load(16, 6), other);
    Bytes more(7);
    EXPECT_THROW(x->Get(more.data(), 7), GenICam_3_0::GenericException);
    EXPECT_THROW(x->Set(more.data(), 7), GenICam_3_0::GenericException);
    EXPECT_THROW(x->Get(more.data(), -1), GenICam_3_0::GenericException);
}

TEST(PlainRegisterRule, ANumbersRegisterIsItsRawBytes) {
    RuleMap rule(Reg("X", 16));
    rule.Put(16, 0x01020304);
    const CRegisterPtr x = rule.Register("X");
    Bytes bytes(4);
    x->Get(bytes.data(), 4);
    EXPECT_EQ(bytes, (Bytes{1, 2, 3, 4}));
    const Bytes other{0, 0, 1, 0};
    x->Set(other.data(), 4);
    EXPECT_EQ(rule.Int("X")->GetValue(), 256);
}

struct AddressRow {
    const char* name;
    std::string nodes; // with X, whose address is asked for
    std::int64_t address;
};

const std::string kTail = "<Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>" UNSIGNED BIG;

class AddressRule : public testing::TestWithParam<AddressRow> {};

TEST_P(AddressRule, IsTheSumOfItsParts) {
    const AddressRow& row = GetParam();
    RuleMap rule(row.nodes);
    rule.Put(0, 3); // what SEL reads
    EXPECT_EQ(rule.Register("X")->GetAddress(), row.address);
    rule.Put(row.address, 77);
    EXPECT_EQ(rule.Int("X")->GetValue(), 77);
    rule.Int("X")->SetValue(78);
    EXPECT_EQ(rule.Memory(row.address), 78U);
}

const std::string kSelector = Reg("SEL", 0);
const std::string kBase = Node("Integer", "BASE", "<Value>0x1000</Value>");

INSTANTIATE_TEST_SUITE_P(
    Sums, AddressRule,
    testing::Values( //
        AddressRow{"Decimal", Node("IntReg", "X", "<Address>256</Address>" + kTail), 256},
        AddressRow{"Hexadecimal", Node("IntReg", "X", "<Address>0x100</Address>" + kTail), 256},
        AddressRow{"TwoAddresses",
                   Node("IntReg", "X", "<Address>0x100</Address><Address>0x20</Address>" + kTail), 0x120},
        AddressRow{"Pointer", kBase + Node("IntReg", "X", "<pAddress>BASE</pAddress>" + kTail), 0x1000},
        AddressRow{"PointerAndOffset",
                   kBase + Node("IntReg", "X", "<pAddress>BASE</pAddress><Address>8</Address>" + kTail),
                   0x1008},
        AddressRow{"TwoPointers",
                   kBase + Node("Integer", "MORE", "<Value>4</Value>") +
                       Node("IntReg", "X", "<pAddress>BASE</pAddress><pAddress>MORE</pAddress>" + kTail),
                   0x1004},
        AddressRow{"Index",
                   kSelector + Node("IntReg", "X", "<Address>0x100</Address><pIndex>SEL</pIndex>" + kTail),
                   0x10C},
        AddressRow{"IndexWithOffset",
                   kSelector + Node("IntReg", "X",
                                    "<Address>0x100</Address><pIndex Offset=\"0x10\">SEL</pIndex>" + kTail),
                   0x130},
        AddressRow{
            "IndexWithNodeAsOffset",
            kSelector + Node("Integer", "STEP", "<Value>32</Value>") +
                Node("IntReg", "X", "<Address>0x100</Address><pIndex pOffset=\"STEP\">SEL</pIndex>" + kTail),
            0x160},
        AddressRow{"SwissKnifeInside",
                   kSelector + Node("IntReg", "X",
                                    "<IntSwissKnife Name=\"XAddress\"><pVariable "
                                    "Name=\"S\">SEL</pVariable><Formula>0x200 + S * 8</Formula>"
                                    "</IntSwissKnife>" +
                                        kTail),
                   0x218},
        AddressRow{"SwissKnifeOutside",
                   kSelector +
                       Node("IntSwissKnife", "ADDR",
                            "<pVariable Name=\"S\">SEL</pVariable><Formula>0x200 + S * 8</Formula>") +
                       Node("IntReg", "X", "<pAddress>ADDR</pAddress>" + kTail),
                   0x218},
        AddressRow{"All",
                   kSelector + kBase +
                       Node("IntReg", "X",
                            "<Address>4</Address><pAddress>BASE</pAddress><pIndex Offset=\"8\">SEL</pIndex>" +
                                kTail),
                   0x101C},
        AddressRow{"Large", Node("IntReg", "X", "<Address>0x7FFFFFFF00000000</Address>" + kTail),
                   0x7FFFFFFF00000000}),
    [](const auto& tested) { return std::string(tested.param.name); });

TEST(AddressRule, FollowsItsIndexAsItChanges) {
    RuleMap rule(kSelector +
                 Node("IntReg", "X", "<Address>0x100</Address><pIndex Offset=\"8\">SEL</pIndex>" + kTail));
    for (std::uint32_t i = 0; i < 4; ++i) {
        rule.Put(0x100 + 8 * i, 10 + i);
    }
    for (std::uint32_t i = 0; i < 4; ++i) {
        rule.Int("SEL")->SetValue(i);
        EXPECT_EQ(rule.Int("X")->GetValue(), 10 + i);
    }
    rule.Int("SEL")->SetValue(2);
    rule.Int("X")->SetValue(99);
    EXPECT_EQ(rule.Memory(0x110), 99U);
    rule.Int("SEL")->SetValue(0);
    EXPECT_EQ(rule.Int("X")->GetValue(), 10);
}

TEST(AddressRule, LengthMayComeFromANode) {
    RuleMap rule(
        Node("Integer", "LEN", "<Value>6</Value>") +
        Node("Register", "X",
             "<Address>16</Address><pLength>LEN</pLength><AccessMode>RW</AccessMode><pPort>Device</pPort>"));
    EXPECT_EQ(rule.Register("X")->GetLength(), 6);
    rule.Int("LEN")->SetValue(2);
    EXPECT_EQ(rule.Register("X")->GetLength(), 2);
}

TEST(AddressRule, ALengthOfZeroFromANodeIsNoAccess) {
    RuleMap rule(
        Node("Integer", "LEN", "<Value>0</Value>") +
        Node("StringReg", "X",
             "<Address>16</Address><pLength>LEN</pLength><AccessMode>RW</AccessMode><pPort>Device</pPort>"));
    EXPECT_STREQ(rule.String("X")->GetValue().c_str(), "");
    EXPECT_NO_THROW(rule.String("X")->SetValue(""));
    EXPECT_THROW(rule.String("X")->SetValue("a"), GenICam_3_0::GenericException);
    EXPECT_EQ(rule.port.Reads() + rule.port.Writes(), 0U);
    rule.Int("LEN")->SetValue(4);
    rule.String("X")->SetValue("abcd");
    EXPECT_EQ(rule.port.Load(16, 5), (Bytes{'a', 'b', 'c', 'd', 0}));
}

} // namespace
