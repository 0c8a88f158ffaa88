// SwissKnives and Converters: variables and their parts, both directions, ranges through formulas.
#include <cfloat>

#include "platform/genapi/NodeMapFixture.h"

namespace {

using namespace genapi_test;

std::string knife(const std::string& kind, const std::string& inside) {
    return "<" + kind + " Name=\"X\">" + inside + "</" + kind + ">";
}

// What the formulas of the rows may name.
const std::string kVariables = intReg("Reg", "0x100") + R"(
<Integer Name="Limited"><Value>6</Value><Min>2</Min><Max>42</Max><Inc>4</Inc></Integer>
<Float Name="Real"><Value>2.75</Value><Min>-1.25</Min><Max>8.5</Max><Inc>0.25</Inc></Float>
<Boolean Name="Switch"><pValue>SwitchReg</pValue><OnValue>7</OnValue><OffValue>3</OffValue></Boolean>
<IntReg Name="SwitchReg"><Address>0x110</Address><Length>1</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg>
<Enumeration Name="Choice"><EnumEntry Name="Low"><Value>10</Value><NumericValue>0.5</NumericValue></EnumEntry>
<EnumEntry Name="High"><Value>20</Value></EnumEntry><Value>10</Value></Enumeration>
)";

std::string variable(const char* name, const char* node) {
    return std::string("<pVariable Name=\"") + name + "\">" + node + "</pVariable>";
}

struct KnifeRow {
    const char* what;
    std::string inside;
    double value;
};

class SwissKnife : public testing::TestWithParam<KnifeRow> {};

TEST_P(SwissKnife, IsWorkedOut) {
    Map map(kVariables + knife("SwissKnife", GetParam().inside));
    map.port.StoreInteger(0x100, 4, 12);
    map.port.Store(0x110, {7});
    EXPECT_EQ(GetParam().value, map.floating("X")->GetValue());
}

class IntSwissKnife : public testing::TestWithParam<KnifeRow> {};

TEST_P(IntSwissKnife, IsWorkedOut) {
    Map map(kVariables + knife("IntSwissKnife", GetParam().inside));
    map.port.StoreInteger(0x100, 4, 12);
    map.port.Store(0x110, {7});
    EXPECT_EQ(static_cast<std::int64_t>(GetParam().value), map.integer("X")->GetValue());
}

const auto kRowName = [](const auto& row) { return std::string(row.param.what); };

INSTANTIATE_TEST_SUITE_P(
    Rows, SwissKnife,
    testing::Values(
        KnifeRow{"integer", variable("V", "Reg") + "<Formula>V / 8</Formula>", 1.5},
        KnifeRow{"float", variable("V", "Real") + "<Formula>V * 2</Formula>", 5.5},
        KnifeRow{"boolean", variable("V", "Switch") + "<Formula>V * 5</Formula>", 5},
        KnifeRow{"enumeration", variable("V", "Choice") + "<Formula>V</Formula>", 0.5}, // its numeric value
        KnifeRow{"min", variable("V.Min", "Real") + "<Formula>V.Min</Formula>", -1.25},
        KnifeRow{"max", variable("V.Max", "Real") + "<Formula>V.Max</Formula>", 8.5},
        KnifeRow{"inc", variable("V.Inc", "Real") + "<Formula>V.Inc</Formula>", 0.25},
        KnifeRow{"value", variable("V.Value", "Real") + "<Formula>V.Value</Formula>", 2.75},
        KnifeRow{"entry", variable("V.Entry.High", "Choice") + "<Formula>V.Entry.High</Formula>", 20},
        KnifeRow{"partsOfOnePlainVariable", variable("V", "Real") + "<Formula>V.Max - V.Min + V</Formula>",
                 12.5},
        KnifeRow{"constant",
                 variable("V", "Reg") + "<Constant Name=\"C\">0.5</Constant><Formula>V * C</Formula>", 6},
        KnifeRow{"expression",
                 variable("V", "Reg") + "<Expression Name=\"E\">V + 1</Expression><Formula>E * E</Formula>",
                 169},
        KnifeRow{"escaped",
                 variable("V", "Reg") + "<Formula>(V &gt; 5) &amp;&amp; (V &lt; 20) ? 1 : 0</Formula>", 1}),
    kRowName);

INSTANTIATE_TEST_SUITE_P(
    Rows, IntSwissKnife,
    testing::Values(
        KnifeRow{"integer", variable("V", "Reg") + "<Formula>V / 8</Formula>", 1},
        KnifeRow{"floatIsRounded", variable("V", "Real") + "<Formula>V</Formula>", 3},
        KnifeRow{"boolean", variable("V", "Switch") + "<Formula>V + 1</Formula>", 2},
        KnifeRow{"enumeration", variable("V", "Choice") + "<Formula>V</Formula>", 10},
        KnifeRow{"limits", variable("V", "Limited") + "<Formula>V.Max * 1000 + V.Min * 10 + V.Inc</Formula>",
                 42024},
        KnifeRow{"entry", variable("V", "Choice") + "<Formula>V = V.Entry.Low ? 1 : 2</Formula>", 1},
        KnifeRow{"partInsideAnExpression",
                 variable("V", "Limited") +
                     "<Expression Name=\"E\">V.Max - V</Expression><Formula>E</Formula>",
                 36},
        KnifeRow{"registerLimits", variable("V.Max", "Reg") + "<Formula>V.Max</Formula>", 4294967295.0}),
    kRowName);

TEST(SwissKnifeFaults, ComeAtUseWithTheNodesName) {
    struct Row {
        const char* inside;
        const char* problem; // the beginning of the text
    };
    const Row rows[] = {
        {"<Formula>1 +</Formula>", "PropertyException: node 'X': "},
        {"<Formula>Nobody + 1</Formula>", "PropertyException: node 'X': "},
        {"<pVariable Name=\"V\">Choice</pVariable><Formula>V.Entry.Medium</Formula>",
         "PropertyException: node 'Choice' has no entry 'Medium'"},
        {"<pVariable Name=\"V\">Reg</pVariable><Formula>V.Entry.Medium</Formula>",
         "PropertyException: node 'Reg' has no entry 'Medium'"},
        {"<pVariable Name=\"V\">Reg</pVariable><Formula>1 / V</Formula>", "RuntimeException: node 'X': "},
        {"<pVariable Name=\"V\">Nobody</pVariable><Formula>V</Formula>",
         "PropertyException: node 'X': pVariable names 'Nobody', which doesn't exist"},
        {"<pVariable Name=\"V\">Device</pVariable><Formula>V</Formula>",
         "PropertyException: node 'X': pVariable names 'Device', which is of the kind Port and no number"},
        {"<pVariable>Reg</pVariable><Formula>1</Formula>",
         "PropertyException: node 'X': a pVariable has no name"},
        {"<pVariable Name=\"V\">Reg</pVariable>", "PropertyException: node 'X': it has no Formula"},
        {"<pVariable Name=\"V\">X</pVariable><Formula>V</Formula>",
         "RuntimeException: node 'X': its access mode depends on itself"},
        {"<pVariable Name=\"V\">Reg</pVariable><pVariable Name=\"V\">Reg</pVariable><Formula>V</Formula>",
         "PropertyException: node 'X': "},
        {"<Constant Name=\"C\">five</Constant><Formula>C</Formula>", "PropertyException: node 'X': "},
        {"<Expression Name=\"A\">B</Expression><Expression Name=\"B\">A</Expression><Formula>A</Formula>",
         "PropertyException: node 'X': "},
    };
    for (const Row& row : rows) {
        Map map(kVariables + knife("IntSwissKnife", row.inside));
        const std::string first = thrown([&] { map.integer("X")->GetValue(); });
        EXPECT_EQ(row.problem, first.substr(0, std::string(row.problem).size())) << row.inside;
        EXPECT_EQ(first, thrown([&] { map.integer("X")->GetValue(); })) << "the second time";
        EXPECT_EQ(0, map.integer("Reg")->GetValue());
    }
}

TEST(SwissKnifeFaults, AreFoundAllAtOnceOnDemand) {
    Map map(
        kVariables + knife("IntSwissKnife", "<Formula>1 +</Formula>") +
        "<Converter Name=\"C\"><FormulaTo>FROM</FormulaTo><FormulaFrom>TO +</FormulaFrom><pValue>Reg</pValue>"
        "</Converter><IntConverter Name=\"D\"><FormulaTo>WRONG</FormulaTo><FormulaFrom>TO</FormulaFrom>"
        "<pValue>Reg</pValue></IntConverter><SwissKnife Name=\"Good\"><Formula>1</Formula></SwissKnife>");
    gcstring_vector wrong;
    EXPECT_FALSE(map.ref()._ParseSwissKnifes(&wrong));
    EXPECT_EQ((gcstring_vector{"X", "C", "D"}), wrong);
    EXPECT_TRUE(Map("<SwissKnife Name=\"Good\"><Formula>1</Formula></SwissKnife>").ref()._ParseSwissKnifes());
}

TEST(SwissKnifeWrite, IsRefused) {
    Map map(knife("IntSwissKnife", "<Formula>1</Formula>"));
    EXPECT_THROW(map.integer("X")->SetValue(1), AccessException);
    EXPECT_EQ("AccessException: node 'X' can't be set to 1: it is worked out by a formula",
              thrown([&] { map.integer("X")->SetValue(1, false); }));
    EXPECT_EQ(INT64_MIN, map.integer("X")->GetMin());
    EXPECT_EQ(INT64_MAX, map.integer("X")->GetMax());
}

struct ConverterRow {
    const char* what;
    const char* to;
    const char* from;
    const char* slope;
    std::int64_t raw;
    double value;
    double min, max; // of a raw range of 10 to 100
};

class Converter : public testing::TestWithParam<ConverterRow> {};

TEST_P(Converter, WorksBothWays) {
    const ConverterRow& row = GetParam();
    Map map(intReg("Reg", "0x100") +
            "<Integer Name=\"Raw\"><pValue>Reg</pValue><Min>10</Min><Max>100</Max></Integer>"
            "<Converter Name=\"X\"><FormulaTo>" +
            row.to + "</FormulaTo><FormulaFrom>" + row.from + "</FormulaFrom><pValue>Raw</pValue><Slope>" +
            row.slope + "</Slope></Converter>");
    map.port.StoreInteger(0x100, 4, static_cast<std::uint64_t>(row.raw));
    EXPECT_DOUBLE_EQ(row.value, map.floating("X")->GetValue());
    EXPECT_DOUBLE_EQ(row.min, map.floating("X")->GetMin());
    EXPECT_DOUBLE_EQ(row.max, map.floating("X")->GetMax());
    map.integer("Raw")->SetValue(10);
    map.floating("X")->SetValue(row.value);
    EXPECT_EQ(static_cast<std::uint64_t>(row.raw), map.port.LoadInteger(0x100, 4));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Converter,
    testing::Values(ConverterRow{"rising", "FROM / 0.5", "TO * 0.5", "Increasing", 31, 15.5, 5, 50},
                    ConverterRow{"falling", "1000 / FROM", "1000 / TO", "Decreasing", 50, 20, 10, 100},
                    ConverterRow{"automatic", "-FROM", "-TO", "Automatic", 20, -20, -100, -10},
                    // What the slope says can't make minimum and maximum change places.
                    ConverterRow{"wronglyDeclared", "-FROM", "-TO", "Increasing", 20, -20, -100, -10},
                    ConverterRow{"varying", "SQRT(FROM)", "TO * TO", "Varying", 30, 900, -DBL_MAX, DBL_MAX},
                    // Rounded to the nearest raw value, not cut: 29.9999 would be lost otherwise.
                    ConverterRow{"rounded", "FROM * 9.99999", "TO / 9.99999", "Increasing", 30, 30 / 9.99999,
                                 10 / 9.99999, 100 / 9.99999},
                    ConverterRow{"atAPole", "FROM * 10 / (FROM - 1)", "TO / (TO - 10)", "Automatic", 20, 2,
                                 100.0 / 90, DBL_MAX}),
    [](const auto& row) { return row.param.what; });

TEST(ConverterChecks, RangeIsCheckedOnBothSides) {
    Map map(intReg("Reg", "0x100") +
            "<Integer Name=\"Raw\"><pValue>Reg</pValue><Min>10</Min><Max>100</Max></Integer>"
            "<Converter Name=\"X\"><FormulaTo>FROM * 2</FormulaTo><FormulaFrom>TO / "
            "2</FormulaFrom><pValue>Raw</pValue>"
            "<Slope>Varying</Slope></Converter>");
    EXPECT_EQ(
        "OutOfRangeException: node 'X' can't be set to 100: node 'Raw': value 200 is above the maximum 100",
        thrown([&] { map.floating("X")->SetValue(100); }));
    EXPECT_EQ(0U, map.port.Writes());
}

TEST(ConverterVariables, AreSeenByBothFormulas) {
    Map map(intReg("Reg", "0x100") + intReg("Scale", "0x104") +
            "<IntConverter Name=\"X\"><pVariable Name=\"S\">Scale</pVariable><FormulaTo>FROM / S</FormulaTo>"
            "<FormulaFrom>TO * S</FormulaFrom><pValue>Reg</pValue></IntConverter>");
    map.port.StoreInteger(0x104, 4, 5);
    map.integer("X")->SetValue(35);
    EXPECT_EQ(7U, map.port.LoadInteger(0x100, 4));
    EXPECT_EQ(35, map.integer("X")->GetValue());
    map.integer("Scale")->SetValue(3);
    EXPECT_EQ(21, map.integer("X")->GetValue());
}

TEST(IntConverterRange, IsExactAndNeverWraps) {
    struct Row {
        int length;
        const char* from;
        std::int64_t min, max;
    };
    const Row rows[] = {{4, "TO * 10", 0, 42949672950},
                        {4, "TO / 1000", 0, 4294967},
                        {4, "100 - TO", 100 - 4294967295, 100},
                        {8, "TO * 10", 0, INT64_MAX},      // beyond 64 bits
                        {4, "1000000 / TO", 0, INT64_MAX}, // divided by the minimum 0
                        {8, "TO", 0, INT64_MAX}};
    for (const Row& row : rows) {
        Map map(intReg("Reg", "0x100", "", row.length) +
                "<IntConverter Name=\"X\"><FormulaTo>FROM</FormulaTo><FormulaFrom>" + row.from +
                "</FormulaFrom><pValue>Reg</pValue></IntConverter>");
        EXPECT_EQ(row.min, map.integer("X")->GetMin()) << row.from;
        EXPECT_EQ(row.max, map.integer("X")->GetMax()) << row.from;
    }
}

TEST(ConverterFaults, ComeAtUse) {
    Map map(intReg("Reg", "0x100") +
            "<Converter Name=\"NoValue\"><FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom></Converter>"
            "<Converter Name=\"NoFrom\"><FormulaTo>FROM</FormulaTo><pValue>Reg</pValue></Converter>"
            "<Converter Name=\"NoTo\"><FormulaFrom>TO</FormulaFrom><pValue>Reg</pValue></Converter>"
            "<Converter "
            "Name=\"WrongWay\"><FormulaTo>TO</FormulaTo><FormulaFrom>FROM</FormulaFrom><pValue>Reg</pValue>"
            "</Converter>");
    EXPECT_EQ("PropertyException: node 'NoValue': pValue is missing",
              thrown([&] { map.floating("NoValue")->GetValue(); }));
    EXPECT_EQ("PropertyException: node 'NoFrom': it has no FormulaFrom",
              thrown([&] { map.floating("NoFrom")->GetValue(); }));
    EXPECT_EQ(0, map.floating("NoTo")->GetValue());
    EXPECT_THROW(map.floating("NoTo")->SetValue(1), PropertyException);
    EXPECT_THROW(map.floating("WrongWay")->GetValue(), PropertyException);
    EXPECT_EQ(0U, map.port.Writes());
}

TEST(RegisterAddresses, AddUp) {
    struct Row {
        const char* what;
        std::string parts;
        std::int64_t address;
    };
    const Row rows[] = {
        {"two constants", "<Address>0x100</Address><Address>0x20</Address>", 0x120},
        {"pAddress", "<pAddress>Base</pAddress>", 0x1000},
        {"pAddress and constant", "<Address>8</Address><pAddress>Base</pAddress>", 0x1008},
        {"two pAddress", "<pAddress>Base</pAddress><pAddress>Index</pAddress>", 0x1003},
        {"index with offset", "<Address>0x100</Address><pIndex Offset=\"0x10\">Index</pIndex>", 0x130},
        {"index with offset node", "<Address>0x100</Address><pIndex pOffset=\"Step\">Index</pIndex>", 0x11E},
        {"index of neighbours", "<Address>0x100</Address><pIndex>Index</pIndex>", 0x10C},
        {"negative offset", "<Address>0x100</Address><pIndex Offset=\"-4\">Index</pIndex>", 0xF4},
        {"formula",
         "<IntSwissKnife Name=\"K\"><pVariable Name=\"V\">Index</pVariable><Formula>V * 256</Formula>"
         "</IntSwissKnife>",
         0x300},
        {"nameless formula and constant",
         "<IntSwissKnife><pVariable Name=\"V\">Index</pVariable><Formula>V * 256</Formula></IntSwissKnife>"
         "<Address>1</Address>",
         0x301},
    };
    for (const Row& row : rows) {
        Map map("<Integer Name=\"Base\"><Value>0x1000</Value></Integer><Integer "
                "Name=\"Index\"><Value>3</Value></Integer>"
                "<Integer Name=\"Step\"><Value>10</Value></Integer><IntReg Name=\"X\">" +
                row.parts + "<Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg>");
        EXPECT_EQ(row.address, map.reg("X")->GetAddress()) << row.what;
        map.integer("X")->GetValue();
        ASSERT_EQ(1U, map.port.Accesses().size()) << row.what;
        EXPECT_EQ(row.address, map.port.Accesses()[0].address) << row.what;
        EXPECT_EQ(4, map.reg("X")->GetLength());
    }
}

TEST(RegisterAddresses, ThatAreAbsurdAreRefused) {
    struct Row {
        std::string parts;
        const char* problem;
    };
    const Row rows[] = {
        {"<Address>-4</Address>", "PropertyException: node 'X': address 0xfffffffffffffffc is absurd"},
        {"<Address>0x7FFFFFFFFFFFFFFF</Address>",
         "PropertyException: node 'X': address 0x7fffffffffffffff is absurd"},
        {"<Address>0x7FFFFFFFFFFFFFFF</Address><Address>1</Address>",
         "PropertyException: node 'X': its addresses add up to more than 64 bits"},
        {"<Address>zero</Address>", "PropertyException: node 'X': Address is 'zero', which is no integer"},
        {"<pAddress>Large</pAddress><pAddress>Large</pAddress>",
         "RuntimeException: node 'X': node 'Large' takes its address beyond 64 bits"},
        {"<Address>0</Address><pIndex Offset=\"16\">Large</pIndex>",
         "RuntimeException: node 'X': node 'Large' takes its address beyond 64 bits"},
        {"<pAddress>Negative</pAddress>",
         "RuntimeException: node 'X': its address is worked out as 0xffffffffffffffff"},
        {"<Address>0</Address><pIndex Offset=\"x\">Negative</pIndex>",
         "PropertyException: node 'X': pIndex is 'x', which is no integer"},
    };
    for (const Row& row : rows) {
        Map map("<Integer Name=\"Large\"><Value>0x7000000000000000</Value></Integer>"
                "<Integer Name=\"Negative\"><Value>-1</Value></Integer><IntReg Name=\"X\">" +
                row.parts + "<Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg>");
        EXPECT_EQ(row.problem, thrown([&] { map.integer("X")->GetValue(); }));
        EXPECT_EQ(0U, map.port.Reads());
    }
}

} // namespace
