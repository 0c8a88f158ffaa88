// Integers in registers: byte order, sign, length and the bits of masked ones.
#include <vector>

#include "platform/genapi/NodeMapFixture.h"

namespace {

using namespace genapi_test;
using support::MemoryPort;
using Bytes = std::vector<std::uint8_t>;

struct IntegerRow {
    const char* what;
    int length;
    const char* order;
    const char* sign;
    Bytes bytes;
    std::int64_t value;
};

class RegisterInteger : public testing::TestWithParam<IntegerRow> {};

std::string xmlOf(const IntegerRow& row, const char* access = "RW") {
    return std::string("<IntReg Name=\"Reg\">") + registerAt("0x100", row.length, access) + "<Sign>" +
           row.sign + "</Sign><Endianess>" + row.order + "</Endianess></IntReg>";
}

TEST_P(RegisterInteger, IsReadAndWritten) {
    const IntegerRow& row = GetParam();
    Map map(xmlOf(row));
    map.port.Store(0x100, row.bytes);
    EXPECT_EQ(row.value, map.integer("Reg")->GetValue());

    map.port.Store(0x100, Bytes(row.bytes.size(), 0));
    map.integer("Reg")->SetValue(row.value, false);
    EXPECT_EQ(row.bytes, map.port.Load(0x100, row.bytes.size()));
    EXPECT_EQ(row.value, map.integer("Reg")->GetValue(false, true));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, RegisterInteger,
    testing::Values(
        IntegerRow{"big", 4, "BigEndian", "Unsigned", {0x01, 0x02, 0x03, 0x04}, 0x01020304},
        IntegerRow{"little", 4, "LittleEndian", "Unsigned", {0x04, 0x03, 0x02, 0x01}, 0x01020304},
        IntegerRow{"bigNegative", 4, "BigEndian", "Signed", {0xFF, 0xFF, 0xFF, 0xFE}, -2},
        IntegerRow{"littleNegative", 4, "LittleEndian", "Signed", {0xFE, 0xFF, 0xFF, 0xFF}, -2},
        IntegerRow{"unsignedTopBit", 4, "BigEndian", "Unsigned", {0xFF, 0xFF, 0xFF, 0xFE}, 0xFFFFFFFE},
        IntegerRow{"byteSigned", 1, "BigEndian", "Signed", {0x80}, -128},
        IntegerRow{"byteUnsigned", 1, "LittleEndian", "Unsigned", {0x80}, 128},
        IntegerRow{"twoBig", 2, "BigEndian", "Unsigned", {0x12, 0x34}, 0x1234},
        IntegerRow{"twoLittle", 2, "LittleEndian", "Signed", {0x34, 0xF2}, -3532},
        IntegerRow{"threeBig", 3, "BigEndian", "Unsigned", {0x01, 0x02, 0x03}, 0x010203},
        IntegerRow{"sixLittle", 6, "LittleEndian", "Unsigned", {6, 5, 4, 3, 2, 1}, 0x010203040506},
        IntegerRow{"eightBig", 8, "BigEndian", "Signed", {1, 2, 3, 4, 5, 6, 7, 8}, 0x0102030405060708},
        IntegerRow{"eightNegative", 8, "LittleEndian", "Signed", Bytes(8, 0xFF), -1},
        // All 64 bits are kept, whatever the sign says.
        IntegerRow{"eightUnsigned", 8, "BigEndian", "Unsigned", Bytes(8, 0xFF), -1}),
    [](const auto& row) { return row.param.what; });

TEST(RegisterIntegerRange, FollowsLengthAndSign) {
    struct Row {
        int length;
        const char* sign;
        std::int64_t min, max;
    };
    const Row rows[] = {{1, "Unsigned", 0, 255},
                        {1, "Signed", -128, 127},
                        {2, "Unsigned", 0, 65535},
                        {4, "Unsigned", 0, 4294967295},
                        {4, "Signed", -2147483648LL, 2147483647},
                        {8, "Unsigned", 0, INT64_MAX},
                        {8, "Signed", INT64_MIN, INT64_MAX}};
    for (const Row& row : rows) {
        Map map(xmlOf({"", row.length, "BigEndian", row.sign, {}, 0}));
        EXPECT_EQ(row.min, map.integer("Reg")->GetMin()) << row.length << row.sign;
        EXPECT_EQ(row.max, map.integer("Reg")->GetMax()) << row.length << row.sign;
        EXPECT_EQ(1, map.integer("Reg")->GetInc());
        EXPECT_EQ(fixedIncrement, map.integer("Reg")->GetIncMode());
    }
}

TEST(RegisterIntegerRange, WhatDoesNotFitIsNeverCutOff) {
    Map map(xmlOf({"", 2, "BigEndian", "Unsigned", {}, 0}));
    EXPECT_EQ("OutOfRangeException: node 'Reg': value 65536 is above the maximum 65535",
              thrown([&] { map.integer("Reg")->SetValue(65536); }));
    EXPECT_EQ("OutOfRangeException: node 'Reg': value -1 is below the minimum 0",
              thrown([&] { map.integer("Reg")->SetValue(-1); }));
    EXPECT_EQ("OutOfRangeException: node 'Reg': value 65536 doesn't fit into 16 bits",
              thrown([&] { map.integer("Reg")->SetValue(65536, false); }));
    EXPECT_EQ(0U, map.port.Writes());
}

struct MaskRow {
    const char* what;
    const char* order;
    const char* sign;
    const char* bits;
    int length;
    Bytes before;
    std::int64_t value;
    std::int64_t written;
    Bytes after;
};

class MaskedRegister : public testing::TestWithParam<MaskRow> {};

TEST_P(MaskedRegister, SeesAndChangesItsBitsAlone) {
    const MaskRow& row = GetParam();
    Map map(std::string("<MaskedIntReg Name=\"Reg\">") + registerAt("0x10", row.length) + row.bits +
            "<Sign>" + row.sign + "</Sign><Endianess>" + row.order + "</Endianess></MaskedIntReg>");
    map.port.Store(0x10, row.before);
    EXPECT_EQ(row.value, map.integer("Reg")->GetValue());
    map.integer("Reg")->SetValue(row.written);
    EXPECT_EQ(row.after, map.port.Load(0x10, row.after.size()));
    EXPECT_EQ(row.written, map.integer("Reg")->GetValue(false, true));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, MaskedRegister,
    testing::Values(
        // Big-endian registers count bits from the most significant one.
        MaskRow{"bigBit0", "BigEndian", "Unsigned", "<Bit>0</Bit>", 4, {0x80, 0, 0, 0}, 1, 0, {0, 0, 0, 0}},
        MaskRow{"bigBit31", "BigEndian", "Unsigned", "<Bit>31</Bit>", 4, {0, 0, 0, 1}, 1, 0, {0, 0, 0, 0}},
        MaskRow{
            "littleBit0", "LittleEndian", "Unsigned", "<Bit>0</Bit>", 4, {1, 0, 0, 0}, 1, 0, {0, 0, 0, 0}},
        MaskRow{"littleBit31",
                "LittleEndian",
                "Unsigned",
                "<Bit>31</Bit>",
                4,
                {0, 0, 0, 0x80},
                1,
                0,
                {0, 0, 0, 0}},
        MaskRow{"bigField",
                "BigEndian",
                "Unsigned",
                "<LSB>23</LSB><MSB>16</MSB>",
                4,
                {0x11, 0x22, 0x33, 0x44},
                0x33,
                0xAB,
                {0x11, 0x22, 0xAB, 0x44}},
        // Makers disagree about which end of a big-endian field is called LSB.
        MaskRow{"bigFieldSwapped",
                "BigEndian",
                "Unsigned",
                "<LSB>16</LSB><MSB>23</MSB>",
                4,
                {0x11, 0x22, 0x33, 0x44},
                0x33,
                0xAB,
                {0x11, 0x22, 0xAB, 0x44}},
        MaskRow{"littleField",
                "LittleEndian",
                "Unsigned",
                "<LSB>8</LSB><MSB>15</MSB>",
                4,
                {0x11, 0x22, 0x33, 0x44},
                0x22,
                0xAB,
                {0x11, 0xAB, 0x33, 0x44}},
        MaskRow{"littleAcrossBytes",
                "LittleEndian",
                "Unsigned",
                "<LSB>4</LSB><MSB>11</MSB>",
                2,
                {0xAB, 0xCD},
                0xDA,
                0x12,
                {0x2B, 0xC1}},
        MaskRow{
            "signedField", "LittleEndian", "Signed", "<LSB>4</LSB><MSB>7</MSB>", 1, {0xF3}, -1, -8, {0x83}},
        MaskRow{"signedBit", "LittleEndian", "Signed", "<Bit>3</Bit>", 1, {0x08}, -1, 0, {0x00}},
        MaskRow{"twoBytesBig",
                "BigEndian",
                "Unsigned",
                "<LSB>15</LSB><MSB>12</MSB>",
                2,
                {0x12, 0x34},
                4,
                0xF,
                {0x12, 0x3F}},
        MaskRow{"wholeOfEight",
                "BigEndian",
                "Signed",
                "<LSB>63</LSB><MSB>0</MSB>",
                8,
                {0, 0, 0, 0, 0, 0, 0, 5},
                5,
                -2,
                {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE}}),
    [](const auto& row) { return row.param.what; });

TEST(MaskedRegisterRange, FollowsTheBits) {
    Map map("<MaskedIntReg Name=\"U\">" + registerAt("0") + "<LSB>0</LSB><MSB>11</MSB></MaskedIntReg>" +
            "<MaskedIntReg Name=\"S\">" + registerAt("0") +
            "<LSB>0</LSB><MSB>11</MSB><Sign>Signed</Sign></MaskedIntReg>");
    EXPECT_EQ(0, map.integer("U")->GetMin());
    EXPECT_EQ(4095, map.integer("U")->GetMax());
    EXPECT_EQ(-2048, map.integer("S")->GetMin());
    EXPECT_EQ(2047, map.integer("S")->GetMax());
    EXPECT_EQ("OutOfRangeException: node 'U': value 4096 doesn't fit into 12 bits",
              thrown([&] { map.integer("U")->SetValue(4096, false); }));
}

// The bits of a write-only register are commands: ones written again would give them again.
TEST(MaskedRegisterWriteOnly, LeavesTheOtherBitsZero) {
    Map map("<MaskedIntReg Name=\"Go\">" + registerAt("0", 1, "WO") + "<Bit>2</Bit></MaskedIntReg>");
    map.port.Store(0, {0xFF});
    map.integer("Go")->SetValue(1);
    EXPECT_EQ(Bytes{0x04}, map.port.Load(0, 1));
    EXPECT_EQ(0U, map.port.Reads());
}

class SharedRegister : public testing::TestWithParam<const char*> {};

// Two that share an address must not undo each other's writes, whatever is cached.
TEST_P(SharedRegister, KeepsTheNeighboursBits) {
    const std::string more = std::string("<Cachable>") + GetParam() + "</Cachable>";
    Map map("<MaskedIntReg Name=\"A\">" + registerAt("0", 1, "RW", more) +
            "<LSB>0</LSB><MSB>3</MSB></MaskedIntReg>" + "<MaskedIntReg Name=\"B\">" +
            registerAt("0", 1, "RW", more) + "<LSB>4</LSB><MSB>7</MSB></MaskedIntReg>");
    map.port.Store(0, {0x21});
    EXPECT_EQ(1, map.integer("A")->GetValue());
    EXPECT_EQ(2, map.integer("B")->GetValue());
    map.integer("A")->SetValue(0xA);
    map.integer("B")->SetValue(0xB);
    map.integer("A")->SetValue(0xC);
    EXPECT_EQ(Bytes{0xBC}, map.port.Load(0, 1));
    EXPECT_EQ(0xC, map.integer("A")->GetValue());
    EXPECT_EQ(0xB, map.integer("B")->GetValue());
}

INSTANTIATE_TEST_SUITE_P(EachCachingMode, SharedRegister,
                         testing::Values("NoCache", "WriteThrough", "WriteAround"));

TEST(SharedRegisterCost, ReadsOnceForBothWhenWrittenThrough) {
    Map map("<MaskedIntReg Name=\"A\">" + registerAt("0", 1) + "<LSB>0</LSB><MSB>3</MSB></MaskedIntReg>" +
            "<MaskedIntReg Name=\"B\">" + registerAt("0", 1) + "<LSB>4</LSB><MSB>7</MSB></MaskedIntReg>");
    map.integer("A")->GetValue();
    map.integer("B")->GetValue();
    map.port.Forget();
    map.integer("A")->SetValue(3);
    map.integer("B")->SetValue(4);
    EXPECT_EQ(0U, map.port.Reads());
    EXPECT_EQ(2U, map.port.Writes());
    EXPECT_EQ(Bytes{0x43}, map.port.Load(0, 1));
}

TEST(SharedRegisterViews, AWholeRegisterAndItsFieldsSeeEachOther) {
    Map map(intReg("Whole", "0x20") + "<MaskedIntReg Name=\"Low\">" + registerAt("0x22", 2) +
            "<LSB>15</LSB><MSB>0</MSB><Endianess>BigEndian</Endianess></MaskedIntReg>");
    EXPECT_EQ(0, map.integer("Whole")->GetValue());
    EXPECT_EQ(0, map.integer("Low")->GetValue());
    map.integer("Whole")->SetValue(0x12345678);
    EXPECT_EQ(0x5678, map.integer("Low")->GetValue());
    map.integer("Low")->SetValue(0xABCD);
    EXPECT_EQ(0x1234ABCD, map.integer("Whole")->GetValue());
}

TEST(StructRegister, EntriesShareItsRegisterAndItsInvalidators) {
    Map map(
        "<StructReg Comment=\"Both\">" + registerAt("0x8", 4, "RO", "<pInvalidator>Trigger</pInvalidator>") +
        "<Endianess>BigEndian</Endianess><StructEntry Name=\"High\"><LSB>15</LSB><MSB>0</MSB>"
        "<Sign>Signed</Sign></StructEntry><StructEntry Name=\"Low\"><Bit>31</Bit><AccessMode>RW</AccessMode>"
        "</StructEntry></StructReg>" +
        intReg("Trigger", "0x40"));
    map.port.Store(0x8, {0xFF, 0xFE, 0, 1});
    EXPECT_EQ(-2, map.integer("High")->GetValue());
    EXPECT_EQ(1, map.integer("Low")->GetValue());
    EXPECT_EQ(RO, map.mode("High"));
    EXPECT_EQ(RW, map.mode("Low"));
    map.port.Store(0x8, {0, 7, 0, 0});
    EXPECT_EQ(-2, map.integer("High")->GetValue());
    map.integer("Trigger")->SetValue(1);
    EXPECT_EQ(7, map.integer("High")->GetValue());
    EXPECT_EQ(0, map.integer("Low")->GetValue());
}

TEST(StructRegister, EntriesShareItsComputedAddress) {
    Map map(
        "<Integer Name=\"Index\"><Value>2</Value></Integer><StructReg Comment=\"S\">"
        "<IntSwissKnife Name=\"Where\"><pVariable Name=\"I\">Index</pVariable><Formula>I * 16</Formula>"
        "</IntSwissKnife><Length>1</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>"
        "<StructEntry Name=\"A\"><Bit>0</Bit></StructEntry><StructEntry Name=\"B\"><Bit>1</Bit></StructEntry>"
        "</StructReg>");
    map.integer("A")->SetValue(1);
    map.integer("B")->SetValue(1);
    EXPECT_EQ(Bytes{3}, map.port.Load(32, 1));
    map.integer("Index")->SetValue(0);
    EXPECT_EQ(0, map.integer("B")->GetValue());
    map.integer("B")->SetValue(1);
    EXPECT_EQ(Bytes{2}, map.port.Load(0, 1));
    EXPECT_EQ(Bytes{3}, map.port.Load(32, 1));
}

} // namespace
