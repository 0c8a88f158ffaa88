// Integer and Float: where value, range and increment come from, indexed values, copies, and numbers as text.
#include <cfloat>
#include <cmath>

#include "platform/genapi/NodeMapFixture.h"

namespace {

using namespace genapi_test;

std::string integerNode(const std::string& inside) {
    return "<Integer Name=\"X\">" + inside + "</Integer>";
}
std::string floatNode(const std::string& inside) {
    return "<Float Name=\"X\">" + inside + "</Float>";
}
std::string floatReg(const char* name, const char* address, int length = 8) {
    return std::string("<FloatReg Name=\"") + name + "\">" + registerAt(address, length) +
           "<Endianess>LittleEndian</Endianess></FloatReg>";
}

struct RangeRow {
    const char* what;
    const char* nodes;
    std::int64_t min, max, inc;
};

class IntegerRange : public testing::TestWithParam<RangeRow> {};

TEST_P(IntegerRange, ComesFromTheNodeOrTheOneBehindIt) {
    const RangeRow& row = GetParam();
    Map map(intReg("Reg", "0x100") + intReg("Limit", "0x104") + row.nodes);
    map.port.StoreInteger(0x104, 4, 40);
    EXPECT_EQ(row.min, map.integer("X")->GetMin());
    EXPECT_EQ(row.max, map.integer("X")->GetMax());
    EXPECT_EQ(row.inc, map.integer("X")->GetInc());
}

#define X_INTEGER(inside) "<Integer Name=\"X\">" inside "</Integer>"

INSTANTIATE_TEST_SUITE_P(
    Rows, IntegerRange,
    testing::Values(
        RangeRow{"constantUnlimited", X_INTEGER("<Value>5</Value>"), INT64_MIN, INT64_MAX, 1},
        RangeRow{"constantLimited", X_INTEGER("<Value>5</Value><Min>-3</Min><Max>0x10</Max><Inc>2</Inc>"), -3,
                 16, 2},
        RangeRow{"ofTheRegister", X_INTEGER("<pValue>Reg</pValue>"), 0, 4294967295, 1},
        RangeRow{"ownBeforeRegister", X_INTEGER("<pValue>Reg</pValue><Min>16</Min><Max>64</Max><Inc>4</Inc>"),
                 16, 64, 4},
        RangeRow{"ownMaxOnly", X_INTEGER("<pValue>Reg</pValue><Max>64</Max>"), 0, 64, 1},
        RangeRow{"limitNodes",
                 X_INTEGER("<pValue>Reg</pValue><pMin>Limit</pMin><pMax>Limit</pMax><pInc>Limit</pInc>"), 40,
                 40, 40},
        RangeRow{"throughTwo",
                 "<Integer "
                 "Name=\"Y\"><pValue>Reg</pValue><Min>2</Min><Max>20</Max><Inc>3</Inc></Integer>" X_INTEGER(
                     "<pValue>Y</pValue>"),
                 2, 20, 3},
        RangeRow{"floatBehind",
                 "<Float Name=\"F\"><Value>1</Value><Min>-1.5</Min><Max>7.9</Max></Float>" X_INTEGER(
                     "<pValue>F</pValue>"),
                 -1, 7, 1},
        RangeRow{"unlimitedFloatBehind",
                 "<Float Name=\"F\"><Value>1</Value></Float>" X_INTEGER("<pValue>F</pValue>"), INT64_MIN,
                 INT64_MAX, 1},
        RangeRow{"booleanBehind",
                 "<Boolean Name=\"B\"><Value>1</Value></Boolean>" X_INTEGER("<pValue>B</pValue>"), 0, 1, 1},
        RangeRow{"incrementOfZero", X_INTEGER("<Value>5</Value><Inc>0</Inc>"), INT64_MIN, INT64_MAX, 1}),
    [](const auto& row) { return row.param.what; });

TEST(IntegerVerification, NamesNodeAndValue) {
    Map map(intReg("Reg", "0x100") +
            integerNode("<pValue>Reg</pValue><Min>16</Min><Max>64</Max><Inc>4</Inc>"));
    const CIntegerPtr x = map.integer("X");
    x->SetValue(16);
    x->SetValue(64);
    EXPECT_EQ(64, x->GetValue(true));
    EXPECT_EQ("OutOfRangeException: node 'X': value 12 is below the minimum 16",
              thrown([&] { x->SetValue(12); }));
    EXPECT_EQ("OutOfRangeException: node 'X': value 68 is above the maximum 64",
              thrown([&] { x->SetValue(68); }));
    EXPECT_EQ(
        "OutOfRangeException: node 'X': value 18 is not the minimum 16 plus a multiple of the increment 4",
        thrown([&] { x->SetValue(18); }));
    EXPECT_EQ(64, x->GetValue());
    x->SetValue(18, false);
    EXPECT_EQ(18, x->GetValue());
    map.port.StoreInteger(0x100, 4, 70);
    EXPECT_EQ("OutOfRangeException: node 'X': value 70 is above the maximum 64",
              thrown([&] { x->GetValue(true, true); }));
    EXPECT_EQ(70, x->GetValue());
}

TEST(RefusalBelow, NamesTheFeatureThatWasAskedFor) {
    Map map(
        "<StringReg Name=\"SReg\">" + registerAt("0x100") + "</StringReg><FloatReg Name=\"FReg\">" +
        registerAt("0x110") + "</FloatReg><MaskedIntReg Name=\"M\">" + registerAt("0x120") +
        "<LSB>0</LSB><MSB>3</MSB></MaskedIntReg>"
        "<Enumeration Name=\"E\"><EnumEntry Name=\"A\"><Value>0</Value></EnumEntry>"
        "<EnumEntry Name=\"B\"><Value>4</Value><ImposedAccessMode>NA</ImposedAccessMode></EnumEntry>"
        "<EnumEntry Name=\"C\"><Value>9</Value></EnumEntry><Value>0</Value></Enumeration>"
        "<String Name=\"S\"><pValue>SReg</pValue></String><Float Name=\"F\"><pValue>FReg</pValue></Float>"
        "<Integer Name=\"I\"><pValue>M</pValue></Integer><Integer Name=\"N\"><pValue>E</pValue></Integer>");
    EXPECT_EQ(
        "OutOfRangeException: node 'S' can't be set to 'abcde': node 'SReg': 'abcde' has 5 bytes, more than "
        "the 4 that fit",
        thrown([&] { map.string("S")->SetValue("abcde"); }));
    EXPECT_EQ(
        "OutOfRangeException: node 'F' can't be set to 1e+39: node 'FReg': value 1e+39 doesn't fit into a "
        "float of 4 bytes",
        thrown([&] { map.floating("F")->SetValue(1e39, false); }));
    EXPECT_EQ("OutOfRangeException: node 'I' can't be set to 16: node 'M': value 16 doesn't fit into 4 bits",
              thrown([&] { map.integer("I")->SetValue(16, false); }));
    EXPECT_EQ(
        "InvalidArgumentException: node 'N' can't be set to 3: node 'E': value 3 belongs to none of its "
        "entries",
        thrown([&] { map.integer("N")->SetValue(3); }));
    EXPECT_EQ(
        "AccessException: node 'N' can't be set to 4: node 'E': entry 'B' (value 4) can't be chosen: it is "
        "not available now",
        thrown([&] { map.integer("N")->SetValue(4); }));
}

TEST(IntegerVerification, GoesDownTheChain) {
    Map map("<Integer Name=\"Y\"><Value>2</Value><Min>2</Min><Max>20</Max></Integer>" +
            integerNode("<pValue>Y</pValue><Min>0</Min><Max>100</Max>"));
    EXPECT_EQ("OutOfRangeException: node 'X' can't be set to 50: node 'Y': value 50 is above the maximum 20",
              thrown([&] { map.integer("X")->SetValue(50); }));
    map.integer("X")->SetValue(50, false);
    EXPECT_EQ(50, map.integer("Y")->GetValue());
}

TEST(IntegerVerification, TheWholeRangeOf64BitsNeverOverflows) {
    Map map(integerNode("<Value>0</Value><Inc>3</Inc>"));
    const CIntegerPtr x = map.integer("X");
    x->SetValue(INT64_MIN);
    x->SetValue(INT64_MAX); // 2^64 - 1 above the minimum, a multiple of 3
    EXPECT_EQ(INT64_MAX, x->GetValue());
    EXPECT_THROW(x->SetValue(INT64_MAX - 1), OutOfRangeException);
}

TEST(IntegerVerification, ALimitThatCannotBeReadIsAnError) {
    Map map(intReg("WriteOnly", "0x104", "", 4, "WO") +
            integerNode("<Value>1</Value><pMax>WriteOnly</pMax>"));
    EXPECT_EQ("AccessException: node 'WriteOnly' can't be read: it can only be written",
              thrown([&] { map.integer("X")->GetMax(); }));
    EXPECT_THROW(map.integer("X")->SetValue(2), AccessException);
    EXPECT_EQ(1, map.integer("X")->GetValue());
}

// The two sides of a picture limit each other; that is no circle, since no limit needs its own node's limit.
TEST(IntegerVerification, RangesMayDependOnEachOthersValues) {
    Map map(intReg("W", "0x100") + intReg("O", "0x104") +
            "<Integer Name=\"Width\"><pValue>W</pValue><pMax>WidthLimit</pMax></Integer>"
            "<Integer Name=\"Offset\"><pValue>O</pValue><pMax>OffsetLimit</pMax></Integer>"
            "<IntSwissKnife Name=\"WidthLimit\"><pVariable Name=\"V\">Offset</pVariable><Formula>100 - "
            "V</Formula>"
            "</IntSwissKnife>"
            "<IntSwissKnife Name=\"OffsetLimit\"><pVariable Name=\"V\">Width</pVariable><Formula>100 - "
            "V</Formula>"
            "</IntSwissKnife>");
    map.integer("Width")->SetValue(70);
    EXPECT_EQ(30, map.integer("Offset")->GetMax());
    map.integer("Offset")->SetValue(30);
    EXPECT_EQ(70, map.integer("Width")->GetMax());
    EXPECT_THROW(map.integer("Offset")->SetValue(31), OutOfRangeException);
}

TEST(IntegerValidValues, AreAList) {
    Map map(intReg("Reg", "0x100", "<ValidValueSet>8; 1,2 4</ValidValueSet>") +
            integerNode("<pValue>Reg</pValue><Max>5</Max>"));
    const CIntegerPtr x = map.integer("X");
    EXPECT_EQ(listIncrement, x->GetIncMode());
    EXPECT_EQ((int64_autovector_t{1, 2, 4}), x->GetListOfValidValues());
    EXPECT_EQ((int64_autovector_t{1, 2, 4, 8}), x->GetListOfValidValues(false));
    x->SetValue(4);
    EXPECT_EQ("OutOfRangeException: node 'X': value 3 is not among the valid values",
              thrown([&] { x->SetValue(3); }));
    EXPECT_THROW(x->SetValue(8), OutOfRangeException);
    EXPECT_TRUE(map.integer("Reg")->GetListOfValidValues().size() == 4);
}

TEST(IntegerImposedRange, NarrowsTheOwn) {
    Map map(integerNode("<Value>5</Value><Min>0</Min><Max>10</Max>"));
    const CIntegerPtr x = map.integer("X");
    x->ImposeMin(-5);
    x->ImposeMax(8);
    EXPECT_EQ(0, x->GetMin());
    EXPECT_EQ(8, x->GetMax());
    EXPECT_THROW(x->SetValue(9), OutOfRangeException);
    x->SetValue(8);
}

struct TextRow {
    const char* representation;
    std::int64_t value;
    const char* text;
};

TEST(IntegerText, FollowsTheRepresentation) {
    const TextRow rows[] = {{"", -12, "-12"},
                            {"Linear", 12, "12"},
                            {"PureNumber", 12, "12"},
                            {"Logarithmic", 7, "7"},
                            {"HexNumber", 0x1AB, "0x1ab"},
                            {"HexNumber", -1, "0xffffffffffffffff"},
                            {"IPV4Address", 0xC0A80102, "192.168.1.2"},
                            {"IPV4Address", -1, "-1"},
                            {"MACAddress", 0x0123456789AB, "01:23:45:67:89:ab"}};
    for (const TextRow& row : rows) {
        Map map(integerNode("<Value>0</Value><Representation>" + std::string(row.representation) +
                            "</Representation>"));
        map.integer("X")->SetValue(row.value);
        EXPECT_STREQ(row.text, map.value("X")->ToString().c_str());
        map.integer("X")->SetValue(1);
        map.value("X")->FromString(row.text);
        EXPECT_EQ(row.value, map.integer("X")->GetValue()) << row.text;
    }
}

TEST(IntegerText, ReadsWhatPeopleWrite) {
    const TextRow good[] = {{"", 31, "0x1F"},
                            {"", 5, " +5 "},
                            {"", -7, "-7"},
                            {"", 5, "5.00"},
                            {"", INT64_MIN, "-9223372036854775808"},
                            {"", -1, "0xFFFFFFFFFFFFFFFF"}};
    Map map(integerNode("<Value>0</Value>"));
    for (const TextRow& row : good) {
        map.value("X")->FromString(row.text);
        EXPECT_EQ(row.value, map.integer("X")->GetValue()) << row.text;
    }
    for (const char* bad :
         {"", "abc", "1 2", "5.5", "0x", "--1", "1.2.3.4", "99999999999999999999", "0x1G", "+", "."})
        EXPECT_EQ("InvalidArgumentException: node 'X': '" + std::string(bad) + "' is no integer",
                  thrown([&] { map.value("X")->FromString(bad); }));
}

TEST(IntegerIndexed, ChoosesByTheIndex) {
    Map map(intReg("Index", "0x100") + intReg("Reg", "0x104") +
            integerNode(
                "<pIndex>Index</pIndex><ValueIndexed Index=\"2\">22</ValueIndexed>"
                "<pValueIndexed Index=\"-1\">Reg</pValueIndexed><ValueIndexed Index=\"0\">20</ValueIndexed>"
                "<ValueDefault>99</ValueDefault>"));
    map.port.StoreInteger(0x104, 4, 5);
    EXPECT_EQ(20, map.integer("X")->GetValue());
    map.integer("Index")->SetValue(2);
    EXPECT_EQ(22, map.integer("X")->GetValue());
    map.integer("X")->SetValue(23);
    EXPECT_EQ(23, map.integer("X")->GetValue());
    map.integer("Index")->SetValue(7);
    EXPECT_EQ(99, map.integer("X")->GetValue());
    map.integer("Index")->SetValue(2);
    EXPECT_EQ(23, map.integer("X")->GetValue());
}

TEST(IntegerIndexed, WritesTheNodeThatIsChosenAndTakesItsRange) {
    Map map(intReg("Index", "0x100") + intReg("A", "0x104") + intReg("B", "0x108", "", 1) +
            integerNode("<pIndex>Index</pIndex><pValueIndexed Index=\"0\">A</pValueIndexed>"
                        "<pValueIndexed Index=\"1\">B</pValueIndexed>"));
    map.integer("X")->SetValue(300);
    EXPECT_EQ(300U, map.port.LoadInteger(0x104, 4));
    map.integer("Index")->SetValue(1);
    EXPECT_EQ(255, map.integer("X")->GetMax());
    EXPECT_THROW(map.integer("X")->SetValue(300), OutOfRangeException);
    map.integer("Index")->SetValue(2);
    EXPECT_EQ("RuntimeException: node 'X': node 'Index' is 2, for which it has no value",
              thrown([&] { map.integer("X")->GetValue(); }));
}

TEST(IntegerCopies, AreWrittenToo) {
    Map map(intReg("A", "0x100") + intReg("B", "0x104") + intReg("C", "0x108") +
            integerNode("<pValue>A</pValue><pValueCopy>B</pValueCopy><pValueCopy>C</pValueCopy>"));
    map.integer("X")->SetValue(7);
    for (const std::int64_t address : {0x100, 0x104, 0x108})
        EXPECT_EQ(7U, map.port.LoadInteger(address, 4));
}

TEST(IntegerOfAFloat, IsRoundedAndNeverOverflows) {
    Map map("<Float Name=\"F\"><Value>2.5</Value></Float>" + integerNode("<pValue>F</pValue>"));
    EXPECT_EQ(3, map.integer("X")->GetValue());
    map.floating("F")->SetValue(-2.4);
    EXPECT_EQ(-2, map.integer("X")->GetValue());
    map.floating("F")->SetValue(1e300);
    EXPECT_EQ("OutOfRangeException: node 'X' can't be read: node 'F': 1e+300 is beyond all integers",
              thrown([&] { map.integer("X")->GetValue(); }));
    map.integer("X")->SetValue(12);
    EXPECT_EQ(12.0, map.floating("F")->GetValue());
}

TEST(FloatRegister, IsReadAndWrittenInBothSizesAndOrders) {
    struct Row {
        int length;
        const char* order;
        double value;
        std::vector<std::uint8_t> bytes;
    };
    const Row rows[] = {{4, "BigEndian", 1.5, {0x3F, 0xC0, 0, 0}},
                        {4, "LittleEndian", -2, {0, 0, 0, 0xC0}},
                        {8, "BigEndian", 0.1, {0x3F, 0xB9, 0x99, 0x99, 0x99, 0x99, 0x99, 0x9A}},
                        {8, "LittleEndian", 1, {0, 0, 0, 0, 0, 0, 0xF0, 0x3F}}};
    for (const Row& row : rows) {
        Map map("<FloatReg Name=\"X\">" + registerAt("0", row.length) + "<Endianess>" + row.order +
                "</Endianess></FloatReg>");
        map.port.Store(0, row.bytes);
        EXPECT_EQ(row.value, map.floating("X")->GetValue());
        map.floating("X")->SetValue(0);
        map.floating("X")->SetValue(row.value);
        EXPECT_EQ(row.bytes, map.port.Load(0, row.bytes.size()));
    }
}

TEST(FloatRegister, HasTheRangeOfItsSize) {
    Map map(floatReg("F4", "0", 4) + floatReg("F8", "8", 8) + floatReg("F2", "16", 2));
    EXPECT_EQ(static_cast<double>(FLT_MAX), map.floating("F4")->GetMax());
    EXPECT_EQ(-DBL_MAX, map.floating("F8")->GetMin());
    EXPECT_THROW(map.floating("F4")->SetValue(1e39), OutOfRangeException);
    EXPECT_EQ("OutOfRangeException: node 'F4': value 1e+39 doesn't fit into a float of 4 bytes",
              thrown([&] { map.floating("F4")->SetValue(1e39, false); }));
    EXPECT_EQ("PropertyException: node 'F2': a register of 2 bytes holds no float",
              thrown([&] { map.floating("F2")->GetValue(); }));
}

TEST(FloatVerification, NamesNodeAndValue) {
    Map map(floatReg("Reg", "0") +
            floatNode("<pValue>Reg</pValue><Min>0.5</Min><Max>10</Max><Inc>0.1</Inc>"));
    const CFloatPtr x = map.floating("X");
    EXPECT_TRUE(x->HasInc());
    EXPECT_EQ(fixedIncrement, x->GetIncMode());
    EXPECT_EQ(0.1, x->GetInc());
    x->SetValue(10);
    x->SetValue(0.5);
    x->SetValue(static_cast<double>(7.3F)); // as handed over in single precision
    EXPECT_EQ("OutOfRangeException: node 'X': value 0.4 is below the minimum 0.5",
              thrown([&] { x->SetValue(0.4); }));
    EXPECT_EQ("OutOfRangeException: node 'X': value 10.5 is above the maximum 10",
              thrown([&] { x->SetValue(10.5); }));
    EXPECT_EQ("OutOfRangeException: node 'X': value 1.25 is not the minimum 0.5 plus a multiple of the "
              "increment 0.1",
              thrown([&] { x->SetValue(1.25); }));
    EXPECT_EQ("OutOfRangeException: node 'X': NaN is no value", thrown([&] { x->SetValue(std::nan("")); }));
    EXPECT_EQ(static_cast<double>(7.3F), x->GetValue());
    x->SetValue(1.25, false);
    EXPECT_EQ(1.25, x->GetValue(true));
}

TEST(FloatVerification, WithoutIncrementTakesEverythingBetween) {
    Map map(floatReg("Reg", "0") + floatNode("<pValue>Reg</pValue><Min>0</Min><Max>1</Max>"));
    EXPECT_FALSE(map.floating("X")->HasInc());
    EXPECT_EQ(noIncrement, map.floating("X")->GetIncMode());
    EXPECT_EQ("LogicalErrorException: node 'X' has no increment",
              thrown([&] { map.floating("X")->GetInc(); }));
    map.floating("X")->SetValue(0.123456789);
    EXPECT_EQ(0.123456789, map.floating("X")->GetValue());
    map.floating("X")->ImposeMax(0.5);
    map.floating("X")->ImposeMin(0.25);
    EXPECT_EQ(0.25, map.floating("X")->GetMin());
    EXPECT_THROW(map.floating("X")->SetValue(0.75), OutOfRangeException);
}

TEST(FloatVerification, LimitsComeFromTheNodeBehind) {
    Map map(intReg("Reg", "0", "", 1) + floatNode("<pValue>Reg</pValue>"));
    EXPECT_EQ(0, map.floating("X")->GetMin());
    EXPECT_EQ(255, map.floating("X")->GetMax());
    map.floating("X")->SetValue(2.6); // rounded by the register, not refused
    EXPECT_EQ(3, map.floating("X")->GetValue());
}

TEST(FloatValidValues, AreAList) {
    Map map(floatNode("<Value>1</Value><Max>2</Max><ValidValueSet>0.5;1.4;2.8</ValidValueSet>"));
    EXPECT_EQ(listIncrement, map.floating("X")->GetIncMode());
    EXPECT_EQ((double_autovector_t{0.5, 1.4}), map.floating("X")->GetListOfValidValues());
    EXPECT_EQ((double_autovector_t{0.5, 1.4, 2.8}), map.floating("X")->GetListOfValidValues(false));
    map.floating("X")->SetValue(static_cast<double>(1.4F));
    EXPECT_THROW(map.floating("X")->SetValue(1.5), OutOfRangeException);
}

TEST(FloatText, FollowsNotationAndPrecision) {
    struct Row {
        const char* how;
        double value;
        const char* text;
    };
    const Row rows[] = {
        {"", 0.1, "0.1"},
        {"", 1234567.875, "1234567.875"},
        {"<DisplayPrecision>3</DisplayPrecision>", 1234.5678, "1.23e+03"},
        {"<DisplayNotation>Fixed</DisplayNotation><DisplayPrecision>2</DisplayPrecision>", 3.14159, "3.14"},
        {"<DisplayNotation>Fixed</DisplayNotation>", 2, "2.000000"},
        {"<DisplayNotation>Scientific</DisplayNotation><DisplayPrecision>1</DisplayPrecision>", 1234,
         "1.2e+03"},
        {"<DisplayNotation>Fixed</DisplayNotation><DisplayPrecision>1000</DisplayPrecision>", 1e300, nullptr},
    };
    for (const Row& row : rows) {
        Map map(floatNode("<Value>0</Value>" + std::string(row.how)));
        map.floating("X")->SetValue(row.value);
        const gcstring text = map.value("X")->ToString();
        if (row.text != nullptr)
            EXPECT_STREQ(row.text, text.c_str());
        else
            EXPECT_EQ(366U, text.size()); // 301 digits, a point, and no more than 64 behind it
    }
    Map map(floatNode("<Value>0</Value>"));
    map.value("X")->FromString(" +2.5e3 ");
    EXPECT_EQ(2500, map.floating("X")->GetValue());
    EXPECT_EQ("InvalidArgumentException: node 'X': '2,5' is no number",
              thrown([&] { map.value("X")->FromString("2,5"); }));
}

TEST(NumberPresentation, ComesFromTheNodeOrTheOneBehindIt) {
    Map map(
        "<FloatReg Name=\"Reg\">" + registerAt("0", 8) +
        "<Unit>us</Unit><Representation>Logarithmic</Representation><DisplayNotation>Fixed</DisplayNotation>"
        "<DisplayPrecision>3</DisplayPrecision></FloatReg>" +
        "<Float Name=\"Own\"><pValue>Reg</pValue><Unit>ms</Unit><Representation>Linear</Representation>"
        "<DisplayNotation>Scientific</DisplayNotation><DisplayPrecision>1</DisplayPrecision></Float>"
        "<Float Name=\"Behind\"><pValue>Reg</pValue></Float><Float Name=\"None\"><Value>0</Value></Float>"
        "<Integer Name=\"I\"><pValue>J</pValue></Integer><Integer Name=\"J\"><Value>1</Value><Unit>px</Unit>"
        "<Representation>HexNumber</Representation></Integer>");
    EXPECT_STREQ("ms", map.floating("Own")->GetUnit().c_str());
    EXPECT_EQ(Linear, map.floating("Own")->GetRepresentation());
    EXPECT_EQ(fnScientific, map.floating("Own")->GetDisplayNotation());
    EXPECT_EQ(1, map.floating("Own")->GetDisplayPrecision());
    EXPECT_STREQ("us", map.floating("Behind")->GetUnit().c_str());
    EXPECT_EQ(Logarithmic, map.floating("Behind")->GetRepresentation());
    EXPECT_EQ(fnFixed, map.floating("Behind")->GetDisplayNotation());
    EXPECT_EQ(3, map.floating("Behind")->GetDisplayPrecision());
    EXPECT_STREQ("", map.floating("None")->GetUnit().c_str());
    EXPECT_EQ(PureNumber, map.floating("None")->GetRepresentation());
    EXPECT_EQ(fnAutomatic, map.floating("None")->GetDisplayNotation());
    EXPECT_EQ(6, map.floating("None")->GetDisplayPrecision());
    EXPECT_STREQ("px", map.integer("I")->GetUnit().c_str());
    EXPECT_EQ(HexNumber, map.integer("I")->GetRepresentation());
}

TEST(NumberOperators, AreGetAndSet) {
    Map map("<Integer Name=\"I\"><Value>1</Value></Integer><Float Name=\"F\"><Value>2.5</Value></Float>");
    *map.integer("I") = 5;
    EXPECT_EQ(5, (*map.integer("I"))());
    EXPECT_EQ(5, **map.integer("I"));
    *map.floating("F") = 0.5;
    EXPECT_EQ(0.5, (*map.floating("F"))());
    EXPECT_EQ(0.5, **map.floating("F"));
    EXPECT_EQ(map.integer("I")->GetNode(), static_cast<INode*>(map.node("I")));
}

} // namespace
