// XML that no camera should have. Each ends in an exception that says what is wrong and where, at loading or
// at the first use of the node, and never in a crash, a hang or a guess.
#include <gmock/gmock.h>

#include <chrono>

#include "platform/genapi/RuleMap.h"

namespace {

using namespace rules;
using GenICam_3_0::GenericException;
using testing::HasSubstr;

// Loads the whole text and uses node X, if it comes to that. The description of what was thrown, or "".
std::string Use(const std::string& xml) {
    try {
        CNodeMapRef map("Device");
        map._LoadXMLFromString(xml.c_str());
        support::MemoryPort port;
        map._Connect(&port, "Device");
        INode* const node = map._GetNode("X");
        if (node == nullptr) {
            return "no X";
        }
        node->GetAccessMode();
        const CValuePtr value(node);
        if (value) {
            value->ToString();
        }
        const CIntegerPtr integer(node);
        if (integer) {
            integer->GetMin();
            integer->GetMax();
            integer->GetInc();
        }
        map._Connect(nullptr, "Device");
    } catch (const GenericException& error) {
        EXPECT_GT(error.GetSourceLine(), 0U);
        return error.GetDescription();
    }
    return {};
}

struct Row {
    const char* name;
    std::string nodes;
    const char* named; // what the text must mention
};

class BadNodeRule : public testing::TestWithParam<Row> {};

TEST_P(BadNodeRule, IsAnErrorThatNamesTheNode) {
    const Row& row = GetParam();
    const std::string text = Use(Description(row.nodes));
    EXPECT_THAT(text, HasSubstr(row.named)) << row.nodes;
}

const std::string kBig = "<Sign>Unsigned</Sign><Endianess>BigEndian</Endianess>";
const std::string kR = Reg("R", 0);

std::string IntRegOf(const std::string& inside) {
    return Node("IntReg", "X", inside + kBig);
}

INSTANTIATE_TEST_SUITE_P(
    References, BadNodeRule,
    testing::Values( //
        Row{"UnknownValue", Node("Integer", "X", "<pValue>NOWHERE</pValue>"), "NOWHERE"},
        Row{"UnknownLimit", kR + Node("Integer", "X", "<pValue>R</pValue><pMax>NOWHERE</pMax>"), "NOWHERE"},
        Row{"UnknownCondition",
            kR + Node("Integer", "X", "<pIsAvailable>NOWHERE</pIsAvailable><pValue>R</pValue>"), "NOWHERE"},
        Row{"UnknownVariable",
            Node("IntSwissKnife", "X", "<pVariable Name=\"V\">NOWHERE</pVariable><Formula>V</Formula>"),
            "NOWHERE"},
        Row{"UnknownAddress",
            IntRegOf("<pAddress>NOWHERE</pAddress><Length>4</Length><AccessMode>RW</"
                     "AccessMode><pPort>Device</pPort>"),
            "NOWHERE"},
        Row{"UnknownIndex", IntRegOf(At(0) + "<pIndex>NOWHERE</pIndex>"), "NOWHERE"},
        Row{"UnknownPort",
            IntRegOf(
                "<Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>NOWHERE</pPort>"),
            "NOWHERE"},
        Row{"ValueOfTheWrongKind", Node("Category", "C", "") + Node("Integer", "X", "<pValue>C</pValue>"),
            "X"},
        Row{"StringAsNumber",
            Node("String", "S", "<Value>a</Value>") + Node("Integer", "X", "<pValue>S</pValue>"), "X"},
        Row{"PortOfTheWrongKind",
            kR +
                IntRegOf("<Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>R</pPort>"),
            "X"},
        Row{"ValueOfItself", Node("Integer", "X", "<pValue>X</pValue>"), "X"},
        Row{"ValuesInACircle",
            Node("Integer", "X", "<pValue>Y</pValue>") + Node("Integer", "Y", "<pValue>X</pValue>"), "X"},
        Row{"KnivesInACircle",
            Node("IntSwissKnife", "X", "<pVariable Name=\"V\">Y</pVariable><Formula>V</Formula>") +
                Node("IntSwissKnife", "Y", "<pVariable Name=\"V\">X</pVariable><Formula>V</Formula>"),
            "depends on itself"},
        Row{"LimitsInACircle",
            Node("IntSwissKnife", "X", "<pVariable Name=\"V.Max\">Y</pVariable><Formula>V.Max</Formula>") +
                Node("Integer", "Y", "<Value>1</Value><pMax>X</pMax>"),
            "X"},
        Row{"AddressInACircle",
            IntRegOf(
                "<pAddress>X</pAddress><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>"),
            "X"}),
    [](const auto& tested) { return std::string(tested.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Properties, BadNodeRule,
    testing::Values( //
        Row{"ValueMissing", Node("Integer", "X", ""), "X"},
        Row{"ValueIsNoNumber", Node("Integer", "X", "<Value>many</Value>"), "X"},
        Row{"ValueTooLarge", Node("Integer", "X", "<Value>99999999999999999999</Value>"), "X"},
        Row{"LengthMissing", IntRegOf("<Address>0</Address><AccessMode>RW</AccessMode><pPort>Device</pPort>"),
            "X"},
        Row{"LengthZero", IntRegOf(At(0, 0)), "X"}, Row{"LengthNegative", IntRegOf(At(0, -4)), "X"},
        Row{"LengthNine", IntRegOf(At(0, 9)), "X"},
        Row{"LengthAbsurd",
            Node("StringReg", "X",
                 "<Address>0</Address><Length>9223372036854775807</Length><AccessMode>RW</"
                 "AccessMode><pPort>Device</pPort>"),
            "X"},
        Row{"LengthOfGigabytes",
            Node("Register", "X",
                 "<Address>0</Address><Length>68719476736</Length><AccessMode>RW</AccessMode><pPort>Device</"
                 "pPort>"),
            "X"},
        Row{"FloatOfTwoBytes", Node("FloatReg", "X", At(0, 2)), "X"},
        Row{"BitBeyondTheRegister", Node("MaskedIntReg", "X", At(0) + "<Bit>32</Bit>" + kBig), "X"},
        Row{"BitNegative", Node("MaskedIntReg", "X", At(0) + "<Bit>-1</Bit>" + kBig), "X"},
        Row{"FieldBeyondTheRegister", Node("MaskedIntReg", "X", At(0) + "<LSB>0</LSB><MSB>64</MSB>" + kBig),
            "X"},
        Row{"FieldWithoutBits", Node("MaskedIntReg", "X", At(0) + kBig), "X"},
        Row{"PortMissing", IntRegOf("<Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode>"),
            "X"},
        Row{"AccessModeUnknown",
            IntRegOf("<Address>0</Address><Length>4</Length><AccessMode>Sometimes</AccessMode><pPort>Device</"
                     "pPort>"),
            "X"},
        Row{"SignUnknown", Node("IntReg", "X", At(0) + "<Sign>Perhaps</Sign>"), "X"},
        Row{"FormulaMissing", Node("IntSwissKnife", "X", ""), "X"},
        Row{"FormulaBroken", Node("IntSwissKnife", "X", "<Formula>1 +</Formula>"), "X"},
        Row{"FormulasUnknownName", Node("SwissKnife", "X", "<Formula>A + 1</Formula>"), "X"},
        Row{"ExpressionsInACircle",
            Node("SwissKnife", "X",
                 "<Expression Name=\"A\">B</Expression><Expression "
                 "Name=\"B\">A</Expression><Formula>A</Formula>"),
            "X"},
        Row{"ConverterWithoutFormula", kR + Node("Converter", "X", "<pValue>R</pValue>"), "X"},
        Row{"ConverterWithoutValue",
            Node("Converter", "X", "<FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom>"), "X"},
        Row{"EnumerationWithoutValue",
            Node("Enumeration", "X", "<EnumEntry Name=\"A\"><Value>0</Value></EnumEntry>"), "X"},
        Row{"EntryWithoutValue", kR + Node("Enumeration", "X", "<EnumEntry Name=\"A\"/><pValue>R</pValue>"),
            "X"}),
    [](const auto& tested) { return std::string(tested.param.name); });

TEST(BadXmlRule, NamesAreGivenOnce) {
    EXPECT_THAT(
        Use(Description(Node("Integer", "X", "<Value>1</Value>") + Node("Float", "X", "<Value>2</Value>"))),
        HasSubstr("X"));
}

TEST(BadXmlRule, NodesHaveNames) {
    EXPECT_NE(
        Use(Description("<Integer><Value>1</Value></Integer>" + Node("Integer", "X", "<Value>1</Value>"))),
        "");
    EXPECT_NE(
        Use(Description(Node("Integer", "", "<Value>1</Value>") + Node("Integer", "X", "<Value>1</Value>"))),
        "");
}

TEST(BadXmlRule, TextsThatAreNoDescription) {
    const std::string good = Description(Node("Integer", "X", "<Value>1</Value>"));
    ASSERT_EQ(Use(good), "");
    for (const std::string& bad :
         {std::string(), std::string(" "), std::string("hello"), std::string("<"), std::string("<a/>"),
          std::string("\xEF\xBB\xBF"), std::string("<?xml version=\"1.0\"?>"),
          std::string("<RegisterDescription>"), std::string("PK\x03\x04"),
          std::string("<html><body>404</body></html>"), good.substr(0, good.size() / 2),
          good.substr(0, good.size() - 5)}) {
        const std::string text = Use(bad);
        EXPECT_NE(text, "") << bad.substr(0, 60);
        EXPECT_NE(text, "no X") << bad.substr(0, 60);
    }
}

TEST(BadXmlRule, EveryTruncationIsAnError) {
    const std::string good = Description(kR + Node("Integer", "X", "<pValue>R</pValue>"));
    const std::size_t body = good.rfind("</RegisterDescription>");
    for (std::size_t length = 0; length < body + 10; ++length) {
        const std::string text = Use(good.substr(0, length));
        EXPECT_TRUE(!text.empty() && text != "no X") << length;
    }
}

TEST(BadXmlRule, AByteOrderMarkAndOtherEncodingsAreUnderstoodOrRefused) {
    const std::string good = Description(Node("Integer", "X", "<ToolTip>\xC3\xA4</ToolTip><Value>1</Value>"));
    EXPECT_EQ(Use("\xEF\xBB\xBF" + good), "");
    EXPECT_EQ(Use("\n  " + good.substr(good.find("<RegisterDescription"))), "");
}

TEST(BadXmlRule, UnknownSchemaVersionsAreRefused) {
    std::string xml = Description(Node("Integer", "X", "<Value>1</Value>"));
    xml.replace(xml.find("SchemaMajorVersion=\"1\""), 22, "SchemaMajorVersion=\"7\"");
    EXPECT_THAT(Use(xml), HasSubstr("7"));
}

TEST(BadXmlRule, DeepNestingIsNoTrouble) {
    std::string open;
    std::string close;
    for (int i = 0; i < 100000; ++i) {
        open += "<Group>";
        close += "</Group>";
    }
    Use(Description(open + Node("Integer", "X", "<Value>1</Value>") + close));
    std::string deep;
    for (int i = 0; i < 100000; ++i) {
        deep += "<a>";
    }
    EXPECT_NE(Use(Description(Node("Integer", "X", deep))), "");
}

TEST(BadXmlRule, LongChainsAreNoTrouble) {
    // 50000 integers, each over the next: it may be refused, but the thread's stack must hold.
    std::string nodes = Node("Integer", "X", "<pValue>N0</pValue>");
    constexpr int kLength = 50000;
    for (int i = 0; i < kLength; ++i) {
        nodes +=
            Node("Integer", "N" + std::to_string(i),
                 i + 1 == kLength ? "<Value>7</Value>" : "<pValue>N" + std::to_string(i + 1) + "</pValue>");
    }
    const std::string text = Use(Description(nodes));
    EXPECT_TRUE(text.empty() || text.find('N') != std::string::npos) << text;
}

TEST(BadXmlRule, FansThatMultiplyAreNoTrouble) {
    // Each knife asks the next one twice: 2 to the power of 40 reads, if nobody remembers.
    std::string nodes =
        Reg("N40", 0, "<Cachable>NoCache</Cachable>") + Node("Integer", "X", "<pValue>N0</pValue>");
    for (int i = 0; i < 40; ++i) {
        const std::string next = "N" + std::to_string(i + 1);
        nodes += Node("IntSwissKnife", "N" + std::to_string(i),
                      "<pVariable Name=\"A\">" + next + "</pVariable><pVariable Name=\"B\">" + next +
                          "</pVariable><Formula>A + B</Formula>");
    }
    const auto start = std::chrono::steady_clock::now();
    EXPECT_THAT(Use(Description(nodes)), HasSubstr("N"));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

TEST(BadXmlRule, EntitiesThatMultiplyAreNoTrouble) {
    std::string xml = "<?xml version=\"1.0\"?><!DOCTYPE r [<!ENTITY a \"aaaaaaaaaa\">";
    char last = 'a';
    for (char c = 'b'; c < 'k'; ++c) {
        xml += std::string("<!ENTITY ") + c + " \"";
        for (int i = 0; i < 10; ++i) {
            xml += std::string("&") + last + ";";
        }
        xml += "\">";
        last = c;
    }
    xml += "]>";
    const std::string good =
        Description(Node("Integer", "X", std::string("<ToolTip>&") + last + ";</ToolTip><Value>1</Value>"));
    Use(xml + good.substr(good.find("<RegisterDescription")));
}

TEST(BadXmlRule, AFailedLoadLeavesTheObjectUsable) {
    CNodeMapRef map("Device");
    EXPECT_THROW(map._LoadXMLFromString("<broken"), GenericException);
    EXPECT_THROW(map._GetNode("X"), GenICam_3_0::LogicalErrorException);
    map._LoadXMLFromString(Description(Node("Integer", "X", "<Value>1</Value>")).c_str());
    EXPECT_NE(map._GetNode("X"), nullptr);
}

} // namespace
