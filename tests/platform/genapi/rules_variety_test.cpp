// What makers' files do differently, without being wrong.
#include <gmock/gmock.h>

#include <limits>

#include "platform/genapi/RuleMap.h"

namespace {

using namespace rules;

struct NumberRow {
    const char* name;
    const char* text;
    std::int64_t value;
};

class IntegerTextRule : public testing::TestWithParam<NumberRow> {};

TEST_P(IntegerTextRule, IsUnderstood) {
    const RuleMap rule(Node("Integer", "X", std::string("<Value>") + GetParam().text + "</Value>"));
    EXPECT_EQ(rule.Int("X")->GetValue(), GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(Texts, IntegerTextRule,
                         testing::Values( //
                             NumberRow{"Plain", "42", 42}, NumberRow{"Negative", "-42", -42},
                             NumberRow{"Plus", "+42", 42}, NumberRow{"Blanks", "\n\t 42 \r\n", 42},
                             NumberRow{"Hex", "0x2A", 42}, NumberRow{"CapitalX", "0X2a", 42},
                             NumberRow{"NegativeHex", "-0x2A", -42}, NumberRow{"LeadingZeros", "007", 7},
                             NumberRow{"ZeroFraction", "42.000", 42},
                             NumberRow{"AllBits", "0xFFFFFFFFFFFFFFFF", -1},
                             NumberRow{"Largest", "9223372036854775807", INT64_MAX},
                             NumberRow{"Smallest", "-9223372036854775808", INT64_MIN}),
                         [](const auto& tested) { return std::string(tested.param.name); });

struct FloatRow {
    const char* name;
    const char* text;
    double value;
};

class FloatTextRule : public testing::TestWithParam<FloatRow> {};

TEST_P(FloatTextRule, IsUnderstood) {
    const RuleMap rule(Node("Float", "X", std::string("<Value>") + GetParam().text + "</Value>"));
    EXPECT_EQ(rule.Float("X")->GetValue(), GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, FloatTextRule,
    testing::Values( //
        FloatRow{"Plain", "1.5", 1.5}, FloatRow{"Integer", "3", 3}, FloatRow{"Exponent", "1.5E-3", 0.0015},
        FloatRow{"PlusExponent", "1e+3", 1000}, FloatRow{"Plus", "+2.5", 2.5}, FloatRow{"Hex", "0x10", 16},
        FloatRow{"Fraction", ".25", 0.25}, FloatRow{"PointAtTheEnd", "3.", 3},
        FloatRow{"Blanks", " 2.5\n", 2.5},
        FloatRow{"Largest", "1.7976931348623157E+308", std::numeric_limits<double>::max()}),
    [](const auto& tested) { return std::string(tested.param.name); });

TEST(VarietyRule, AMaximumWithoutSignIsBeyondAllIntegers) {
    for (const char* maximum : {"0xFFFFFFFFFFFFFFFF", "18446744073709551615"}) {
        RuleMap rule(
            Node("Integer", "X", std::string("<Value>1</Value><Min>0</Min><Max>") + maximum + "</Max>"));
        EXPECT_EQ(rule.Int("X")->GetMax(), INT64_MAX) << maximum;
        EXPECT_NO_THROW(rule.Int("X")->SetValue(5));
    }
    RuleMap rule(Node("Integer", "X", "<Value>-5</Value><Max>-1</Max>"));
    EXPECT_EQ(rule.Int("X")->GetMax(), -1);
}

TEST(VarietyRule, AttributesStandInAnyOrder) {
    RuleMap rule(
        Reg("R", 0) +
        Node("IntSwissKnife", "K",
             "<pVariable Comment=\"c\" Name=\"V\">R</pVariable><Formula>V + 1</Formula>") +
        Node("IntReg", "X",
             "<Address>0x10</Address><pIndex Comment=\"c\" "
             "Offset=\"8\">R</pIndex><Length>4</Length><AccessMode>RW</AccessMode>"
             "<pPort>Device</pPort><Endianess>BigEndian</Endianess>") +
        "<Integer NameSpace=\"Standard\" Comment=\"c\" Name=\"Y\"><Value Comment=\"v\">3</Value></Integer>");
    rule.Put(0, 2);
    EXPECT_EQ(rule.Int("K")->GetValue(), 3);
    EXPECT_EQ(rule.Register("X")->GetAddress(), 0x20);
    EXPECT_EQ(rule.Int("Y")->GetValue(), 3);
}

TEST(VarietyRule, ElementsStandInAnyOrder) {
    RuleMap rule(
        Node("IntReg", "X",
             "<Endianess>BigEndian</Endianess><pPort>Device</pPort><Sign>Signed</Sign><Length>2</Length>"
             "<AccessMode>RW</AccessMode><Address>4</Address><ToolTip>late</ToolTip>"));
    rule.Put(4, 0xFFFE, 2);
    EXPECT_EQ(rule.Int("X")->GetValue(), -2);
    EXPECT_STREQ(rule.Get("X")->GetToolTip().c_str(), "late");
}

TEST(VarietyRule, NamesAndReferencesMayHaveBlanksAround) {
    RuleMap rule("<IntReg Name=\" R \">" + At(0) + "<Endianess> BigEndian </Endianess></IntReg>" +
                 Node("Integer", "X", "<pValue>\n  R\n</pValue>"));
    rule.Put(0, 7);
    EXPECT_EQ(rule.Int("X")->GetValue(), 7);
}

TEST(VarietyRule, ReferencesToWhatIsNotThereHurtOnlyWhereAValueHangsOnThem) {
    RuleMap rule(
        Reg("R", 0, "<pInvalidator>GONE</pInvalidator>") +
        Node("Integer", "X",
             "<pAlias>GONE</pAlias><pError>GONE</pError><pValue>R</pValue><pSelected>GONE</pSelected>") +
        Node("Category", "C", "<pFeature>GONE</pFeature><pFeature>X</pFeature>") +
        Node("Integer", "BAD", "<pValue>GONE</pValue>"));
    EXPECT_EQ(rule.Int("X")->GetValue(), 0);
    EXPECT_FALSE(CSelectorPtr(rule.Get("X"))->IsSelector());
    EXPECT_EQ(rule.Get("X")->GetAlias(), nullptr);
    FeatureList_t features;
    CCategoryPtr(rule.Get("C"))->GetFeatures(features);
    EXPECT_THAT(Names(features), testing::ElementsAre("X"));
    EXPECT_THROW(rule.Int("BAD")->GetValue(), GenICam_3_0::GenericException);
}

TEST(VarietyRule, TheSameNodeTwiceIsOne) {
    RuleMap rule(Reg("R", 0) + Reg("R", 0) + Node("Integer", "X", "<pValue>R</pValue>"));
    EXPECT_EQ(rule.Int("X")->GetValue(), 0);
    NodeList_t nodes;
    rule.map._GetNodes(nodes);
    EXPECT_EQ(nodes.size(), 3U);
}

TEST(VarietyRule, TextsKeepTheirBytesAndCharacterReferences) {
    RuleMap rule(Node("Float", "X",
                      "<ToolTip>5 &#181;m &lt;&amp;&gt; \xC2\xB5</ToolTip><Value>1</Value><Unit>\xC2\xB0"
                      "C</Unit>"));
    EXPECT_STREQ(rule.Get("X")->GetToolTip().c_str(), "5 \xC2\xB5m <&> \xC2\xB5");
    EXPECT_STREQ(rule.Float("X")->GetUnit().c_str(), "\xC2\xB0"
                                                     "C");
}

TEST(VarietyRule, FilesMayBePrefixedPaddedAndPadded) {
    const std::string xml = Description(Node("Integer", "X", "<Value>1</Value>"));
    std::string prefixed = xml;
    for (std::size_t at = 0; (at = prefixed.find("Integer", at)) != std::string::npos; at += 9) {
        prefixed.insert(at, "g:");
    }
    for (const std::string& text :
         {xml + std::string(100, '\0'), xml + "\n\n", "\n " + xml, "\xEF\xBB\xBF" + xml, prefixed}) {
        CNodeMapRef map("Device");
        map._LoadXMLFromString(GenICam_3_0::gcstring(text.data(), text.size()));
        ASSERT_NE(map._GetNode("X"), nullptr);
        EXPECT_EQ(CIntegerPtr(map._GetNode("X"))->GetValue(), 1);
    }
}

TEST(VarietyRule, LatinTextsBecomeUtf8) {
    std::string xml = Description(Node("Integer", "X", "<ToolTip>\xE4</ToolTip><Value>1</Value>"));
    xml.replace(xml.find("utf-8"), 5, "ISO-8859-1");
    CNodeMapRef map("Device");
    map._LoadXMLFromString(xml.c_str());
    EXPECT_STREQ(map._GetNode("X")->GetToolTip().c_str(), "\xC3\xA4");
}

TEST(VarietyRule, NodesMayBeUsedBeforeTheyAreDefined) {
    RuleMap rule(Node("Category", "Root", "<pFeature>X</pFeature>") +
                 Node("Integer", "X", "<pIsAvailable>K</pIsAvailable><pValue>R</pValue>") +
                 Node("IntSwissKnife", "K", "<pVariable Name=\"V\">R</pVariable><Formula>V = 0</Formula>") +
                 Reg("R", 0));
    EXPECT_EQ(rule.Int("X")->GetValue(), 0);
}

TEST(VarietyRule, SeveralPortsHaveTheirOwnRegisters) {
    RuleMap rule("<Port Name=\"Chunk\"><ChunkID>A1</ChunkID></Port>" + Reg("R", 0) +
                 Node("IntReg", "C",
                      "<Address>0</Address><Length>4</Length><AccessMode>RO</AccessMode><pPort>Chunk</"
                      "pPort><Endianess>BigEndian</Endianess>"));
    support::MemoryPort chunk;
    chunk.StoreInteger(0, 4, 99);
    EXPECT_FALSE(IsReadable(rule.Mode("C")));
    EXPECT_TRUE(rule.map._Connect(&chunk, "Chunk"));
    EXPECT_EQ(rule.Int("C")->GetValue(), 99);
    EXPECT_EQ(rule.Int("R")->GetValue(), 0);
    rule.Int("R")->SetValue(5);
    EXPECT_EQ(rule.Int("C")->GetValue(false, true), 99);
    rule.map._Connect(nullptr, "Chunk");
}

} // namespace
