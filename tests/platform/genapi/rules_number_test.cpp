// Ranges, increments, conversions and computed numbers.
#include <gmock/gmock.h>

#include <cmath>
#include <limits>

#include "platform/genapi/RuleMap.h"

namespace {

using namespace rules;
using GenICam_3_0::InvalidArgumentException;
using GenICam_3_0::OutOfRangeException;
constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();

const std::string kSigned = "<Sign>Signed</Sign><Endianess>BigEndian</Endianess>";

std::string SignedReg(const std::string& name, int address, int length = 4) {
    return Node("IntReg", name, At(address, length) + kSigned);
}

struct RangeRow {
    const char* name;
    std::string nodes;
    std::int64_t minimum;
    std::int64_t maximum;
    std::int64_t increment;
};

class IntegerRangeRule : public testing::TestWithParam<RangeRow> {};

TEST_P(IntegerRangeRule, Holds) {
    const RangeRow& row = GetParam();
    RuleMap rule(row.nodes);
    rule.Put(100, 10);
    rule.Put(104, 50);
    rule.Put(108, 5);
    const CIntegerPtr x = rule.Int("X");
    EXPECT_EQ(x->GetMin(), row.minimum);
    EXPECT_EQ(x->GetMax(), row.maximum);
    EXPECT_EQ(x->GetInc(), row.increment);
}

const std::string kLimits = Reg("LOW", 100) + Reg("HIGH", 104) + Reg("STEP", 108);

INSTANTIATE_TEST_SUITE_P(
    Sources, IntegerRangeRule,
    testing::Values( //
        RangeRow{"None", Node("Integer", "X", "<Value>5</Value>"), kMin, kMax, 1},
        RangeRow{"Numbers", Node("Integer", "X", "<Value>5</Value><Min>-4</Min><Max>0x20</Max><Inc>3</Inc>"),
                 -4, 32, 3},
        RangeRow{"Nodes",
                 kLimits + Node("Integer", "X",
                                "<Value>20</Value><pMin>LOW</pMin><pMax>HIGH</pMax><pInc>STEP</pInc>"),
                 10, 50, 5},
        RangeRow{"OfTheRegister", Reg("R", 0) + Node("Integer", "X", "<pValue>R</pValue>"), 0, 0xFFFFFFFF, 1},
        RangeRow{"OfTheSignedRegister", SignedReg("R", 0, 2) + Node("Integer", "X", "<pValue>R</pValue>"),
                 -32768, 32767, 1},
        RangeRow{"MaximumAlone", Reg("R", 0) + Node("Integer", "X", "<pValue>R</pValue><Max>100</Max>"), 0,
                 100, 1},
        RangeRow{"NarrowerThanTheRegister",
                 Reg("R", 0) + Node("Integer", "X", "<pValue>R</pValue><Min>2</Min><Max>100</Max>"), 2, 100,
                 1},
        RangeRow{"OfAnIntegerBehind",
                 Reg("R", 0) +
                     Node("Integer", "M", "<pValue>R</pValue><Min>8</Min><Max>64</Max><Inc>8</Inc>") +
                     Node("Integer", "X", "<pValue>M</pValue>"),
                 8, 64, 8}),
    [](const auto& tested) { return std::string(tested.param.name); });

TEST(IntegerRule, IsCheckedBeforeItIsWritten) {
    RuleMap rule(Reg("R", 0) +
                 Node("Integer", "Width", "<pValue>R</pValue><Min>16</Min><Max>64</Max><Inc>8</Inc>"));
    rule.Put(0, 32);
    const CIntegerPtr x = rule.Int("Width");
    for (const std::int64_t bad : {std::int64_t{15}, std::int64_t{65}, std::int64_t{17}, std::int64_t{63},
                                   std::int64_t{-1}, kMin, kMax}) {
        try {
            x->SetValue(bad);
            ADD_FAILURE() << bad << " was taken";
        } catch (const OutOfRangeException& error) {
            EXPECT_THAT(error.GetDescription(),
                        testing::AllOf(testing::HasSubstr("Width"), testing::HasSubstr(std::to_string(bad))));
        }
    }
    EXPECT_EQ(rule.port.Writes(), 0U);
    for (const std::int64_t good : {16, 24, 64}) {
        x->SetValue(good);
        EXPECT_EQ(rule.Memory(0), static_cast<std::uint64_t>(good));
    }
    // Without verification only the register's own size counts.
    x->SetValue(17, false);
    EXPECT_EQ(rule.Memory(0), 17U);
    EXPECT_THROW(x->SetValue(-1, false), GenICam_3_0::GenericException);
    EXPECT_EQ(rule.Memory(0), 17U);
}

TEST(IntegerRule, VerifiedReadingChecksTheRange) {
    RuleMap rule(Reg("R", 0) +
                 Node("Integer", "X", "<pValue>R</pValue><Min>16</Min><Max>64</Max><Inc>8</Inc>"));
    rule.Put(0, 99);
    EXPECT_EQ(rule.Int("X")->GetValue(), 99);
    EXPECT_THROW(rule.Int("X")->GetValue(true), OutOfRangeException);
}

TEST(IntegerRule, TheIncrementCountsFromTheMinimum) {
    RuleMap rule(Reg("R", 0) +
                 Node("Integer", "X", "<pValue>R</pValue><Min>3</Min><Max>20</Max><Inc>5</Inc>"));
    rule.Int("X")->SetValue(13);
    EXPECT_EQ(rule.Memory(0), 13U);
    EXPECT_THROW(rule.Int("X")->SetValue(10), OutOfRangeException);
}

TEST(IntegerRule, ExtremeRangesDoNotOverflowTheIncrementsCheck) {
    RuleMap rule(
        Node("Integer", "X",
             "<Value>0</Value><Min>-9223372036854775808</Min><Max>9223372036854775807</Max><Inc>2</Inc>"));
    EXPECT_NO_THROW(rule.Int("X")->SetValue(kMax - 1));
    EXPECT_THROW(rule.Int("X")->SetValue(kMax), OutOfRangeException);
    EXPECT_NO_THROW(rule.Int("X")->SetValue(kMin));
}

TEST(IntegerRule, AnIncrementBelowOneCountsAsOne) {
    RuleMap rule(Reg("R", 0) + Node("Integer", "X", "<Value>0</Value><pInc>R</pInc>") +
                 Node("Integer", "Y", "<Value>0</Value><Inc>-5</Inc>"));
    EXPECT_EQ(rule.Int("X")->GetInc(), 1);
    EXPECT_EQ(rule.Int("Y")->GetInc(), 1);
    EXPECT_NO_THROW(rule.Int("X")->SetValue(7));
}

TEST(IntegerRule, TextsAreReadAsPeopleWriteNumbers) {
    RuleMap rule(Reg("R", 0) + Node("Integer", "X", "<pValue>R</pValue>"));
    const CIntegerPtr x = rule.Int("X");
    x->FromString("0x1F");
    EXPECT_EQ(x->GetValue(), 31);
    x->FromString(" 42 ");
    EXPECT_EQ(x->GetValue(), 42);
    for (const char* bad : {"", "abc", "12a", "1e400", "--1"}) {
        EXPECT_THROW(x->FromString(bad), InvalidArgumentException) << bad;
    }
    EXPECT_STREQ(x->ToString().c_str(), "42");
}

TEST(IntegerRule, RepresentationShapesTheText) {
    RuleMap rule(
        Node("Integer", "H", "<Value>255</Value><Representation>HexNumber</Representation>") +
        Node("Integer", "IP", "<Value>0xC0A80001</Value><Representation>IPV4Address</Representation>") +
        Node("Integer", "MAC", "<Value>0x0030530A0B0C</Value><Representation>MACAddress</Representation>"));
    EXPECT_EQ(rule.Int("H")->GetRepresentation(), HexNumber);
    EXPECT_STRCASEEQ(rule.Int("H")->ToString().c_str(), "0xFF");
    EXPECT_STREQ(rule.Int("IP")->ToString().c_str(), "192.168.0.1");
    EXPECT_STRCASEEQ(rule.Int("MAC")->ToString().c_str(), "00:30:53:0a:0b:0c");
    rule.Int("IP")->FromString("10.1.2.3");
    EXPECT_EQ(rule.Int("IP")->GetValue(), 0x0A010203);
}

TEST(IntegerRule, RepresentationAndUnitComeFromWhatIsBehind) {
    RuleMap rule(Reg("R", 0, "<Unit>mm</Unit><Representation>Logarithmic</Representation>") +
                 Node("Integer", "X", "<pValue>R</pValue>"));
    EXPECT_EQ(rule.Int("R")->GetRepresentation(), Logarithmic);
    EXPECT_STREQ(rule.Int("R")->GetUnit().c_str(), "mm");
    EXPECT_EQ(rule.Int("X")->GetRepresentation(), Logarithmic);
    EXPECT_STREQ(rule.Int("X")->GetUnit().c_str(), "mm");
}

TEST(IntegerRule, ImposedLimitsNarrowOnly) {
    RuleMap rule(Node("Integer", "X", "<Value>20</Value><Min>10</Min><Max>50</Max>"));
    const CIntegerPtr x = rule.Int("X");
    x->ImposeMin(15);
    x->ImposeMax(40);
    EXPECT_EQ(x->GetMin(), 15);
    EXPECT_EQ(x->GetMax(), 40);
    EXPECT_THROW(x->SetValue(12), OutOfRangeException);
    x->ImposeMin(0);
    x->ImposeMax(100);
    EXPECT_EQ(x->GetMin(), 10);
    EXPECT_EQ(x->GetMax(), 50);
}

TEST(IntegerRule, IndexedValuesFollowTheIndex) {
    RuleMap rule(Reg("SEL", 0) + Reg("R1", 4) + Reg("R2", 8) +
                 Node("Integer", "X",
                      "<pIndex>SEL</pIndex><pValueIndexed Index=\"1\">R1</pValueIndexed><pValueIndexed "
                      "Index=\"2\">R2</pValueIndexed>"
                      "<ValueIndexed Index=\"3\">33</ValueIndexed><ValueDefault>-1</ValueDefault>") +
                 Node("Integer", "Y",
                      "<pIndex>SEL</pIndex><ValueIndexed "
                      "Index=\"3\">5</ValueIndexed><pValueDefault>R1</pValueDefault>"));
    rule.Put(4, 11);
    rule.Put(8, 22);
    const auto at = [&](int index) {
        rule.Int("SEL")->SetValue(index);
        return rule.Int("X")->GetValue();
    };
    EXPECT_EQ(at(1), 11);
    EXPECT_EQ(at(2), 22);
    EXPECT_EQ(at(3), 33);
    EXPECT_EQ(rule.Int("Y")->GetValue(), 5);
    EXPECT_EQ(at(0), -1);
    EXPECT_EQ(rule.Int("Y")->GetValue(), 11);
    rule.Int("SEL")->SetValue(2);
    rule.Int("X")->SetValue(99);
    EXPECT_EQ(rule.Memory(8), 99U);
    EXPECT_EQ(rule.Memory(4), 11U);
}

TEST(IntegerRule, ValueCopiesAreWrittenAlongButNotRead) {
    RuleMap rule(Reg("R", 0) + Reg("COPY1", 4) + Reg("COPY2", 8) +
                 Node("Integer", "X",
                      "<pValue>R</pValue><pValueCopy>COPY1</pValueCopy><pValueCopy>COPY2</pValueCopy>"));
    rule.Put(4, 77);
    EXPECT_EQ(rule.Int("X")->GetValue(), 0);
    rule.Int("X")->SetValue(5);
    EXPECT_EQ(rule.Memory(0), 5U);
    EXPECT_EQ(rule.Memory(4), 5U);
    EXPECT_EQ(rule.Memory(8), 5U);
}

TEST(FloatRule, HasLimitsUnitAndNotation) {
    RuleMap rule(Reg("R", 0) + Reg("HIGH", 4) +
                 Node("Float", "X",
                      "<pValue>R</pValue><Min>0.5</Min><pMax>HIGH</pMax><Unit>us</"
                      "Unit><Representation>Logarithmic</Representation>"
                      "<DisplayNotation>Fixed</DisplayNotation><DisplayPrecision>3</DisplayPrecision>"));
    rule.Put(0, 10);
    rule.Put(4, 100);
    const CFloatPtr x = rule.Float("X");
    EXPECT_EQ(x->GetValue(), 10);
    EXPECT_EQ(x->GetMin(), 0.5);
    EXPECT_EQ(x->GetMax(), 100);
    EXPECT_STREQ(x->GetUnit().c_str(), "us");
    EXPECT_EQ(x->GetRepresentation(), Logarithmic);
    EXPECT_EQ(x->GetDisplayNotation(), fnFixed);
    EXPECT_EQ(x->GetDisplayPrecision(), 3);
    EXPECT_THROW(x->SetValue(0.25), OutOfRangeException);
    EXPECT_THROW(x->SetValue(100.5), OutOfRangeException);
    EXPECT_THROW(x->SetValue(std::nan("")), GenICam_3_0::GenericException);
    EXPECT_THROW(x->SetValue(std::numeric_limits<double>::infinity()), GenICam_3_0::GenericException);
    x->SetValue(12.6);
    EXPECT_EQ(rule.Memory(0), 13U) << "an integer behind a float takes the nearest";
}

TEST(FloatRule, DisplayDefaultsAreThoseOfTheSchema) {
    RuleMap rule(Node("Float", "X", "<Value>1.5</Value>"));
    EXPECT_EQ(rule.Float("X")->GetDisplayNotation(), fnAutomatic);
    EXPECT_EQ(rule.Float("X")->GetDisplayPrecision(), 6);
    EXPECT_EQ(rule.Float("X")->GetValue(), 1.5);
}

TEST(FloatRule, TextsAreReadInEveryLocaleAlike) {
    RuleMap rule(Node("Float", "X", "<Value>1.5</Value>"));
    const CFloatPtr x = rule.Float("X");
    x->FromString("2.25e1");
    EXPECT_EQ(x->GetValue(), 22.5);
    for (const char* bad : {"", "abc", "1,5", "1.5x"}) {
        EXPECT_THROW(x->FromString(bad), InvalidArgumentException) << bad;
    }
    EXPECT_EQ(x->GetValue(), 22.5);
}

struct ConverterRow {
    const char* name;
    const char* to;
    const char* from;
    const char* slope;
    std::uint32_t raw;
    double value;
    double minimum;
    double maximum;
};

class ConverterRule : public testing::TestWithParam<ConverterRow> {};

// The raw integer has the range 10 to 200.
TEST_P(ConverterRule, ConvertsValueAndRange) {
    const ConverterRow& row = GetParam();
    RuleMap rule(Reg("R", 0) + Node("Integer", "RAW", "<pValue>R</pValue><Min>10</Min><Max>200</Max>") +
                 Node("Converter", "X",
                      std::string("<FormulaTo>") + row.to + "</FormulaTo><FormulaFrom>" + row.from +
                          "</FormulaFrom><pValue>RAW</pValue><Slope>" + row.slope + "</Slope>"));
    rule.Put(0, row.raw);
    const CFloatPtr x = rule.Float("X");
    EXPECT_DOUBLE_EQ(x->GetValue(), row.value);
    EXPECT_DOUBLE_EQ(x->GetMin(), row.minimum);
    EXPECT_DOUBLE_EQ(x->GetMax(), row.maximum);
    rule.Put(0, 0);
    x->SetValue(row.value);
    EXPECT_EQ(rule.Memory(0), row.raw);
}

INSTANTIATE_TEST_SUITE_P(
    Slopes, ConverterRule,
    testing::Values( //
        ConverterRow{"Increasing", "FROM * 10", "TO / 10", "Increasing", 55, 5.5, 1, 20},
        ConverterRow{"Decreasing", "1000 / FROM", "1000 / TO", "Decreasing", 50, 20, 5, 100},
        ConverterRow{"AutomaticUp", "FROM * 10", "TO / 10", "Automatic", 55, 5.5, 1, 20},
        ConverterRow{"AutomaticDown", "1000 / FROM", "1000 / TO", "Automatic", 50, 20, 5, 100}),
    [](const auto& tested) { return std::string(tested.param.name); });

TEST(ConverterRule, RoundsToTheNearestRawInteger) {
    RuleMap rule(
        Reg("R", 0) +
        Node("Converter", "X",
             "<FormulaTo>FROM * 100</FormulaTo><FormulaFrom>TO / 100</FormulaFrom><pValue>R</pValue>"));
    rule.Float("X")->SetValue(0.29); // 28.999999999999996 in doubles
    EXPECT_EQ(rule.Memory(0), 29U);
}

TEST(ConverterRule, WritesOutsideOfTheRangeAreRefused) {
    RuleMap rule(Reg("R", 0) + Node("Integer", "RAW", "<pValue>R</pValue><Min>10</Min><Max>200</Max>") +
                 Node("Converter", "X",
                      "<FormulaTo>FROM * 10</FormulaTo><FormulaFrom>TO / "
                      "10</FormulaFrom><pValue>RAW</pValue><Slope>Increasing</Slope>"));
    EXPECT_THROW(rule.Float("X")->SetValue(20.5), OutOfRangeException);
    EXPECT_THROW(rule.Float("X")->SetValue(0.5), OutOfRangeException);
    EXPECT_EQ(rule.port.Writes(), 0U);
}

TEST(ConverterRule, UsesVariablesConstantsAndExpressions) {
    RuleMap rule(Reg("R", 0) + Reg("GAINREG", 4) +
                 Node("Converter", "X",
                      "<pVariable Name=\"G\">GAINREG</pVariable><Constant "
                      "Name=\"K\">2.5</Constant><Expression Name=\"F\">G * K</Expression>"
                      "<FormulaTo>FROM / F</FormulaTo><FormulaFrom>TO * F</FormulaFrom><pValue>R</pValue>"));
    rule.Put(0, 3);
    rule.Put(4, 4);
    EXPECT_DOUBLE_EQ(rule.Float("X")->GetValue(), 30);
    rule.Int("GAINREG")->SetValue(8);
    EXPECT_DOUBLE_EQ(rule.Float("X")->GetValue(), 60);
    rule.Float("X")->SetValue(100);
    EXPECT_EQ(rule.Memory(0), 5U);
}

TEST(ConverterRule, IntConverterReckonsInIntegers) {
    RuleMap rule(Reg("R", 0) + Node("IntConverter", "X",
                                    "<FormulaTo>FROM / 3</FormulaTo><FormulaFrom>TO * "
                                    "3</FormulaFrom><pValue>R</pValue><Slope>Increasing</Slope>"));
    rule.Put(0, 7);
    EXPECT_EQ(rule.Int("X")->GetValue(), 21);
    EXPECT_EQ(rule.Int("X")->GetMin(), 0);
    EXPECT_EQ(rule.Int("X")->GetMax(), 0xFFFFFFFFLL * 3);
    rule.Int("X")->SetValue(31);
    EXPECT_EQ(rule.Memory(0), 10U);
}

TEST(ConverterRule, OverAFloatKeepsFractions) {
    RuleMap rule(Node("FloatReg", "R", At(0, 8) + "<Endianess>BigEndian</Endianess>") +
                 Node("Converter", "X",
                      "<FormulaTo>FROM / 2</FormulaTo><FormulaFrom>TO * 2</FormulaFrom><pValue>R</pValue>"));
    rule.Float("X")->SetValue(0.75);
    EXPECT_DOUBLE_EQ(rule.Float("R")->GetValue(), 0.375);
}

TEST(SwissKnifeRule, SuffixesOfVariablesAskForMoreThanTheValue) {
    const std::string inner =
        Reg("R", 0) + Node("Integer", "W", "<pValue>R</pValue><Min>8</Min><Max>640</Max><Inc>4</Inc>") +
        Reg("ER", 4) +
        Node("Enumeration", "EN",
             "<EnumEntry Name=\"Low\"><Value>10</Value></EnumEntry><EnumEntry "
             "Name=\"High\"><Value>20</Value></EnumEntry><pValue>ER</pValue>");
    const auto knife = [](const char* name, const char* variable, const char* node, const char* formula) {
        return Node("IntSwissKnife", name,
                    std::string("<pVariable Name=\"") + variable + "\">" + node + "</pVariable><Formula>" +
                        formula + "</Formula>");
    };
    RuleMap rule(inner + knife("KMin", "W.Min", "W", "W.Min + 1") + knife("KMax", "W.Max", "W", "W.Max + 1") +
                 knife("KInc", "W.Inc", "W", "W.Inc + 1") + knife("KValue", "W.Value", "W", "W.Value + 1") +
                 knife("KEntry", "E.Entry.High", "EN", "E.Entry.High + 1"));
    rule.Put(0, 100);
    EXPECT_EQ(rule.Int("KMin")->GetValue(), 9);
    EXPECT_EQ(rule.Int("KMax")->GetValue(), 641);
    EXPECT_EQ(rule.Int("KInc")->GetValue(), 5);
    EXPECT_EQ(rule.Int("KValue")->GetValue(), 101);
    EXPECT_EQ(rule.Int("KEntry")->GetValue(), 21);
}

TEST(SwissKnifeRule, VariablesMayBeAnyKindOfNumber) {
    RuleMap rule(
        Reg("R", 0) + Node("Boolean", "B", "<pValue>R</pValue><OnValue>5</OnValue><OffValue>0</OffValue>") +
        Node("Enumeration", "EN", "<EnumEntry Name=\"Five\"><Value>5</Value></EnumEntry><pValue>R</pValue>") +
        Node("Float", "F", "<Value>2.5</Value>") +
        Node("IntSwissKnife", "KB", "<pVariable Name=\"B\">B</pVariable><Formula>B * 10</Formula>") +
        Node("IntSwissKnife", "KE", "<pVariable Name=\"E\">EN</pVariable><Formula>E * 10</Formula>") +
        Node("SwissKnife", "KF",
             "<pVariable Name=\"F\">F</pVariable><pVariable Name=\"R\">R</pVariable><Formula>F * "
             "R</Formula>"));
    rule.Put(0, 5);
    EXPECT_EQ(rule.Int("KB")->GetValue(), 10) << "a switch is 1 or 0, whatever its register holds";
    EXPECT_EQ(rule.Int("KE")->GetValue(), 50);
    EXPECT_DOUBLE_EQ(rule.Float("KF")->GetValue(), 12.5);
}

TEST(SwissKnifeRule, FaultsNameTheNode) {
    RuleMap rule(Reg("R", 0) + Node("IntSwissKnife", "Quotient",
                                    "<pVariable Name=\"V\">R</pVariable><Formula>100 / V</Formula>"));
    try {
        rule.Int("Quotient")->GetValue();
        FAIL() << "divided by zero";
    } catch (const GenICam_3_0::GenericException& error) {
        EXPECT_THAT(error.GetDescription(),
                    testing::AllOf(testing::HasSubstr("Quotient"), testing::HasSubstr("zero")));
    }
    rule.Int("R")->SetValue(4);
    EXPECT_EQ(rule.Int("Quotient")->GetValue(), 25);
}

TEST(SwissKnifeRule, ItsUnitAndRepresentationAreItsOwn) {
    RuleMap rule(Node("SwissKnife", "X",
                      "<Formula>1 / 3</Formula><Unit>K</Unit><Representation>PureNumber</Representation>"
                      "<DisplayNotation>Scientific</DisplayNotation><DisplayPrecision>2</DisplayPrecision>"));
    EXPECT_DOUBLE_EQ(rule.Float("X")->GetValue(), 1.0 / 3);
    EXPECT_STREQ(rule.Float("X")->GetUnit().c_str(), "K");
    EXPECT_EQ(rule.Float("X")->GetRepresentation(), PureNumber);
    EXPECT_EQ(rule.Float("X")->GetDisplayNotation(), fnScientific);
    EXPECT_EQ(rule.Float("X")->GetDisplayPrecision(), 2);
}

} // namespace
