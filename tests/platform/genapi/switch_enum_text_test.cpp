// Boolean, Command, Enumeration, texts, plain registers and categories.
#include <vector>

#include "platform/genapi/NodeMapFixture.h"

namespace {

using namespace genapi_test;
using Bytes = std::vector<std::uint8_t>;

// Boolean

TEST(BooleanNode, HasTwoMeanings) {
    Map map(
        intReg("Reg", "0x100") +
        "<Boolean Name=\"Plain\"><pValue>Reg</pValue></Boolean>"
        "<Boolean Name=\"Own\"><pValue>Reg</pValue><OnValue>0xA</OnValue><OffValue>5</OffValue></Boolean>");
    map.boolean("Plain")->SetValue(true);
    EXPECT_EQ(1U, map.port.LoadInteger(0x100, 4));
    EXPECT_TRUE(map.boolean("Plain")->GetValue());
    *map.boolean("Plain") = false;
    EXPECT_FALSE((*map.boolean("Plain"))());
    map.boolean("Own")->SetValue(true);
    EXPECT_EQ(10U, map.port.LoadInteger(0x100, 4));
    EXPECT_TRUE(**map.boolean("Own"));
    map.boolean("Own")->SetValue(false);
    EXPECT_EQ(5U, map.port.LoadInteger(0x100, 4));
    EXPECT_FALSE(map.boolean("Own")->GetValue());
}

TEST(BooleanNode, AnotherNumberIsNoMeaning) {
    Map map(intReg("Reg", "0x100") + "<Boolean Name=\"X\"><pValue>Reg</pValue></Boolean>");
    map.port.StoreInteger(0x100, 4, 2);
    EXPECT_EQ(
        "RuntimeException: node 'X': node 'Reg' holds 2, which is neither its OnValue 1 nor its OffValue 0",
        thrown([&] { map.boolean("X")->GetValue(); }));
    map.boolean("X")->SetValue(true);
    EXPECT_TRUE(map.boolean("X")->GetValue());
}

TEST(BooleanNode, MayStandInTheXml) {
    for (const char* on : {"1", "true", "True", "Yes"}) {
        Map map(std::string("<Boolean Name=\"X\"><Value>") + on + "</Value></Boolean>");
        EXPECT_TRUE(map.boolean("X")->GetValue()) << on;
        map.boolean("X")->SetValue(false);
        EXPECT_FALSE(map.boolean("X")->GetValue());
    }
    Map map("<Boolean Name=\"X\"><Value>false</Value></Boolean><Boolean "
            "Name=\"Bad\"><Value>maybe</Value></Boolean>"
            "<Boolean Name=\"None\"/><Boolean Name=\"Same\"><Value>1</Value><OnValue>0</OnValue></Boolean>");
    EXPECT_FALSE(map.boolean("X")->GetValue());
    EXPECT_EQ("PropertyException: node 'Bad': Value is 'maybe', which is no yes or no",
              thrown([&] { map.boolean("Bad")->GetValue(); }));
    EXPECT_EQ("PropertyException: node 'None': it has neither Value nor pValue",
              thrown([&] { map.boolean("None")->SetValue(true); }));
    EXPECT_EQ("PropertyException: node 'Same': OnValue and OffValue are the same",
              thrown([&] { map.boolean("Same")->SetValue(true, false); }));
}

TEST(BooleanNode, HasTextsAndANumber) {
    Map map("<Boolean Name=\"X\"><Value>0</Value></Boolean><Integer Name=\"N\"><pValue>X</pValue></Integer>");
    for (const char* on : {"1", "true", "TRUE", "on", "Yes"}) {
        map.boolean("X")->SetValue(false);
        map.value("X")->FromString(on);
        EXPECT_TRUE(map.boolean("X")->GetValue()) << on;
    }
    EXPECT_STREQ("1", map.value("X")->ToString().c_str());
    EXPECT_EQ(1, map.integer("N")->GetValue());
    map.integer("N")->SetValue(0);
    EXPECT_STREQ("0", map.value("X")->ToString().c_str());
    EXPECT_EQ("InvalidArgumentException: node 'X': '2' is no 1, 0, true or false",
              thrown([&] { map.value("X")->FromString("2"); }));
    EXPECT_FALSE(CIntegerPtr(map.node("X")).IsValid());
}

// Command

TEST(CommandNode, WritesItsValueAndTellsWhenItIsDone) {
    Map map(intReg("Reg", "0x100") +
            "<Command Name=\"X\"><pValue>Reg</pValue><CommandValue>3</CommandValue></Command>");
    EXPECT_TRUE(map.command("X")->IsDone());
    map.command("X")->Execute();
    EXPECT_EQ(3U, map.port.LoadInteger(0x100, 4));
    EXPECT_FALSE(map.command("X")->IsDone());
    EXPECT_STREQ("1", map.value("X")->ToString().c_str());
    map.port.StoreInteger(0x100, 4, 0); // done, says the camera: asked each time, whatever is cached
    EXPECT_TRUE(map.command("X")->IsDone());
    EXPECT_STREQ("0", map.value("X")->ToString().c_str());
}

TEST(CommandNode, ThatCannotBeReadIsDoneAtOnce) {
    Map map(intReg("Reg", "0x100", "", 4, "WO") +
            "<Command Name=\"X\"><pValue>Reg</pValue><CommandValue>1</CommandValue></Command>");
    (*map.command("X"))();
    EXPECT_TRUE(map.command("X")->IsDone());
    EXPECT_EQ(0U, map.port.Reads());
    EXPECT_EQ(1U, map.port.Writes());
}

TEST(CommandNode, MayHaveItsValueFromANode) {
    Map map(intReg("Reg", "0x100") +
            "<Integer Name=\"Key\"><Value>77</Value></Integer>"
            "<Command Name=\"X\"><pValue>Reg</pValue><pCommandValue>Key</pCommandValue></Command>");
    map.command("X")->Execute();
    EXPECT_EQ(77U, map.port.LoadInteger(0x100, 4));
}

TEST(CommandNode, IsCheckedLikeAWrite) {
    Map map(
        intReg("Reg", "0x100", "", 1) + intReg("Lock", "0x104", "", 4, "RO") +
        "<Command "
        "Name=\"X\"><pIsLocked>Lock</pIsLocked><pValue>Reg</pValue><CommandValue>1</CommandValue></Command>"
        "<Command Name=\"Big\"><pValue>Reg</pValue><CommandValue>256</CommandValue></Command>"
        "<Command Name=\"NoValue\"><CommandValue>256</CommandValue></Command>"
        "<Command Name=\"NoCommand\"><pValue>Reg</pValue></Command>");
    map.port.StoreInteger(0x104, 4, 1);
    EXPECT_EQ("AccessException: node 'X' can't be executed: it can only be read now",
              thrown([&] { map.command("X")->Execute(); }));
    EXPECT_EQ(
        "OutOfRangeException: node 'Big' can't be executed: node 'Reg': value 256 is above the maximum 255",
        thrown([&] { map.command("Big")->Execute(); }));
    EXPECT_EQ("PropertyException: node 'NoValue': it has neither Value nor pValue",
              thrown([&] { map.command("NoValue")->Execute(); }));
    EXPECT_EQ("PropertyException: node 'NoCommand': it has neither CommandValue nor pCommandValue",
              thrown([&] { map.command("NoCommand")->IsDone(); }));
    EXPECT_EQ(0U, map.port.Writes());
}

TEST(CommandNode, HasTexts) {
    Map map(intReg("Reg", "0x100") +
            "<Command Name=\"X\"><pValue>Reg</pValue><CommandValue>1</CommandValue></Command>");
    map.value("X")->FromString("0");
    EXPECT_EQ(0U, map.port.Writes());
    map.value("X")->FromString("1");
    EXPECT_EQ(1U, map.port.Writes());
    EXPECT_THROW(map.value("X")->FromString("go"), InvalidArgumentException);
}

TEST(CommandNode, IsPolledWhileItRuns) {
    Map map(intReg("Reg", "0x100") +
            "<Command Name=\"X\"><pValue>Reg</pValue><CommandValue>1</CommandValue>"
            "<PollingTime>100</PollingTime></Command>" +
            intReg("Result", "0x104", "<pInvalidator>X</pInvalidator>"));
    map.ref()._Poll(100);
    EXPECT_EQ(0U, map.port.Reads()); // it doesn't run
    map.command("X")->Execute();
    map.integer("Result")->GetValue();
    int changes = 0;
    const CallbackHandleType handle = Register(map.node("X"), [&changes](INode*) { ++changes; });
    map.ref()._Poll(100);
    EXPECT_EQ(0, changes);
    map.port.StoreInteger(0x100, 4, 0);
    map.port.StoreInteger(0x104, 4, 6);
    map.ref()._Poll(100);
    EXPECT_EQ(1, changes);
    EXPECT_EQ(6, map.integer("Result")->GetValue());
    map.port.Forget();
    map.ref()._Poll(100);
    EXPECT_EQ(0U, map.port.Reads());
    Deregister(handle);
}

// Enumeration

const std::string kEnumeration = intReg("Reg", "0x100") + R"(<Enumeration Name="E">
<EnumEntry Name="Mono8"><Value>0x01080001</Value><DisplayName>Mono 8</DisplayName></EnumEntry>
<EnumEntry Name="Mono16"><Value>17825799</Value><NumericValue>16.5</NumericValue></EnumEntry>
<EnumEntry Name="Once"><Value>-1</Value><IsSelfClearing>Yes</IsSelfClearing></EnumEntry>
<pValue>Signed</pValue></Enumeration>
<IntReg Name="Signed"><Address>0x100</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
<Sign>Signed</Sign><Endianess>BigEndian</Endianess></IntReg>)";

TEST(EnumerationNode, IsReadAndWrittenByNumberAndName) {
    Map map(kEnumeration);
    const CEnumerationPtr e = map.enumeration("E");
    e->SetIntValue(0x01080001);
    EXPECT_STREQ("Mono8", e->ToString().c_str());
    EXPECT_EQ(0x01080001, e->GetIntValue());
    *e = "Mono16";
    EXPECT_EQ(0x01100007, e->GetIntValue());
    EXPECT_STREQ("Mono16", (**e).c_str());
    e->FromString("Once");
    EXPECT_EQ(0xFFFFFFFFU, map.port.LoadInteger(0x100, 4));
    EXPECT_STREQ("Once", e->GetCurrentEntry()->GetSymbolic().c_str());
}

TEST(EnumerationNode, KnowsItsEntries) {
    Map map(kEnumeration);
    const CEnumerationPtr e = map.enumeration("E");
    gcstring_vector symbolics;
    e->GetSymbolics(symbolics);
    EXPECT_EQ((gcstring_vector{"Mono8", "Mono16", "Once"}), symbolics);
    NodeList_t entries;
    e->GetEntries(entries);
    ASSERT_EQ(3U, entries.size());
    EXPECT_STREQ("EnumEntry_E_Mono8", entries[0]->GetName().c_str());
    EXPECT_STREQ("Mono 8", entries[0]->GetDisplayName().c_str());
    const CEnumEntryPtr entry(entries[1]);
    EXPECT_EQ(17825799, entry->GetValue());
    EXPECT_STREQ("Mono16", entry->GetSymbolic().c_str());
    EXPECT_EQ(16.5, entry->GetNumericValue());
    EXPECT_FALSE(entry->IsSelfClearing());
    EXPECT_TRUE(e->GetEntryByName("Once")->IsSelfClearing());
    EXPECT_EQ(-1.0, e->GetEntry(-1)->GetNumericValue());
    EXPECT_EQ(nullptr, e->GetEntryByName("Mono12"));
    EXPECT_EQ(nullptr, e->GetEntry(5));
    EXPECT_STREQ("Mono16", map.value("EnumEntry_E_Mono16")->ToString().c_str());
    EXPECT_THROW(map.value("EnumEntry_E_Mono16")->FromString("x", false), AccessException);
}

TEST(EnumerationNode, RefusesWhatNoEntryHas) {
    Map map(kEnumeration);
    const CEnumerationPtr e = map.enumeration("E");
    EXPECT_EQ("InvalidArgumentException: node 'E': value 5 belongs to none of its entries",
              thrown([&] { e->SetIntValue(5); }));
    EXPECT_EQ("InvalidArgumentException: node 'E': 'mono8' is no entry",
              thrown([&] { e->FromString("mono8"); }));
    EXPECT_EQ(0U, map.port.Writes());
    e->SetIntValue(5, false);
    EXPECT_EQ(5, e->GetIntValue());
    EXPECT_EQ(nullptr, e->GetCurrentEntry());
    EXPECT_EQ("OutOfRangeException: node 'E': the camera's value 5 belongs to none of its entries",
              thrown([&] { e->GetIntValue(true); }));
    EXPECT_EQ("OutOfRangeException: node 'E': the camera's value 5 belongs to none of its entries",
              thrown([&] { e->ToString(); }));
}

TEST(EnumerationNode, ThatIsCurrentMayHaveBecomeUnavailable) {
    Map map(intReg("Reg", "0x100") +
            "<Enumeration Name=\"E\"><EnumEntry Name=\"A\"><pIsAvailable>Never</pIsAvailable>"
            "<Value>0</Value></EnumEntry><pValue>Reg</pValue></Enumeration>"
            "<Integer Name=\"Never\"><Value>0</Value></Integer>");
    EXPECT_STREQ("A", map.enumeration("E")->ToString().c_str());
    EXPECT_STREQ("A", map.enumeration("E")->GetCurrentEntry(true)->GetSymbolic().c_str());
    EXPECT_THROW(map.enumeration("E")->SetIntValue(0), AccessException);
}

TEST(EnumerationNode, IsANumberForOthers) {
    Map map(kEnumeration +
            "<Float Name=\"F\"><pValue>E</pValue></Float><Integer Name=\"I\"><pValue>E</pValue></Integer>");
    map.floating("F")->SetValue(16.5); // an entry's numeric value
    EXPECT_EQ(0x01100007, map.integer("I")->GetValue());
    EXPECT_EQ(16.5, map.floating("F")->GetValue());
    map.integer("I")->SetValue(-1);
    EXPECT_EQ(-1.0, map.floating("F")->GetValue());
    EXPECT_EQ(-1, map.integer("I")->GetMin());
    EXPECT_EQ(17825799, map.integer("I")->GetMax());
    EXPECT_THROW(map.integer("I")->SetValue(3), InvalidArgumentException);
}

TEST(EnumerationNode, MayStandInTheXml) {
    Map map(
        "<Enumeration Name=\"E\"><EnumEntry Name=\"A\"><Value>0</Value></EnumEntry><EnumEntry Name=\"B\">"
        "<Value>1</Value></EnumEntry><Value>0</Value><pSelected>S</pSelected></Enumeration>"
        "<Integer Name=\"S\"><pIndex>E</pIndex><ValueIndexed Index=\"0\">10</ValueIndexed>"
        "<ValueIndexed Index=\"1\">11</ValueIndexed></Integer>"
        "<Enumeration Name=\"NoValue\"><EnumEntry Name=\"A\"><Value>0</Value></EnumEntry></Enumeration>"
        "<Enumeration Name=\"BadEntry\"><EnumEntry Name=\"A\"><Value>zero</Value></EnumEntry><Value>0</Value>"
        "</Enumeration>");
    EXPECT_EQ(10, map.integer("S")->GetValue());
    map.enumeration("E")->FromString("B");
    EXPECT_EQ(11, map.integer("S")->GetValue());
    EXPECT_EQ("PropertyException: node 'NoValue': it has neither Value nor pValue",
              thrown([&] { map.enumeration("NoValue")->GetIntValue(); }));
    EXPECT_EQ("PropertyException: node 'EnumEntry_BadEntry_A': Value is 'zero', which is no integer",
              thrown([&] { map.enumeration("BadEntry")->GetEntryByName("A")->GetValue(); }));
}

// Texts

TEST(StringRegister, EndsAtTheFirstZero) {
    Map map("<StringReg Name=\"X\">" + registerAt("0x100", 8) + "</StringReg>");
    map.port.StoreText(0x100, 8, "Cam");
    EXPECT_STREQ("Cam", map.string("X")->GetValue().c_str());
    EXPECT_EQ(8, map.string("X")->GetMaxLength());
    map.port.Store(0x100, {'1', '2', '3', '4', '5', '6', '7', '8', '9'});
    EXPECT_STREQ("12345678", map.string("X")->GetValue(false, true).c_str());
    map.string("X")->SetValue("ab");
    EXPECT_EQ((Bytes{'a', 'b', 0, 0, 0, 0, 0, 0, '9'}), map.port.Load(0x100, 9));
    *map.string("X") = "12345678";
    EXPECT_STREQ("12345678", (*map.string("X"))().c_str());
    map.value("X")->FromString("");
    EXPECT_STREQ("", map.value("X")->ToString().c_str());
    EXPECT_EQ("OutOfRangeException: node 'X': '123456789' has 9 bytes, more than the 8 that fit",
              thrown([&] { map.string("X")->SetValue("123456789"); }));
    EXPECT_THROW(map.string("X")->SetValue("123456789", false), OutOfRangeException);
}

TEST(StringNode, StandsInTheXmlOrInFrontOfAnother) {
    Map map("<StringReg Name=\"Reg\">" + registerAt("0x100", 4) + "</StringReg>" +
            "<String Name=\"Fixed\"><Value>  5 &#181;s &amp; more </Value></String>"
            "<String Name=\"Front\"><pValue>Reg</pValue></String><String Name=\"None\"/>"
            "<String Name=\"Wrong\"><pValue>Device</pValue></String>");
    EXPECT_STREQ("5 \xc2\xb5s & more", map.string("Fixed")->GetValue().c_str());
    EXPECT_EQ(INT64_MAX, map.string("Fixed")->GetMaxLength());
    map.string("Fixed")->SetValue("other");
    EXPECT_STREQ("other", map.value("Fixed")->ToString().c_str());
    map.string("Front")->SetValue("abcd");
    EXPECT_STREQ("abcd", map.string("Reg")->GetValue().c_str());
    EXPECT_EQ(4, map.string("Front")->GetMaxLength());
    EXPECT_THROW(map.string("Front")->SetValue("abcde"), OutOfRangeException);
    EXPECT_EQ("PropertyException: node 'None': it has neither Value nor pValue",
              thrown([&] { map.string("None")->GetValue(); }));
    EXPECT_EQ("PropertyException: node 'Wrong': pValue names 'Device', which is of the kind Port and no text",
              thrown([&] { map.string("Wrong")->GetValue(); }));
}

// Registers as bytes

TEST(PlainRegister, IsBytes) {
    Map map("<Integer Name=\"Size\"><Value>4</Value><Max>100000000</Max></Integer><Register "
            "Name=\"X\"><Address>0x100</Address>"
            "<pLength>Size</pLength><AccessMode>RW</AccessMode><pPort>Device</pPort></Register>");
    const CRegisterPtr x = map.reg("X");
    EXPECT_EQ(4, x->GetLength());
    EXPECT_EQ(0x100, x->GetAddress());
    const std::uint8_t bytes[] = {1, 2, 3, 4, 5};
    x->Set(bytes, 4);
    EXPECT_EQ((Bytes{1, 2, 3, 4}), map.port.Load(0x100, 4));
    EXPECT_STREQ("0x01020304", x->ToString().c_str());
    x->FromString("0xA0b0C0d0");
    std::uint8_t read[5] = {};
    x->Get(read, 2);
    EXPECT_EQ(0xA0, read[0]);
    EXPECT_EQ(0xB0, read[1]);
    EXPECT_EQ(0, read[2]);
    x->Set(bytes, 2); // the beginning alone
    EXPECT_EQ((Bytes{1, 2, 0xC0, 0xD0}), map.port.Load(0x100, 4));
    x->Get(read, 4);
    EXPECT_EQ(0xD0, read[3]);
    map.integer("Size")->SetValue(12);
    EXPECT_EQ(12, x->GetLength());
    EXPECT_EQ(26U, x->ToString().size());
}

TEST(PlainRegister, ChecksLengths) {
    Map map("<Integer Name=\"Size\"><Value>4</Value></Integer><Register Name=\"X\"><Address>0x100</Address>"
            "<pLength>Size</pLength><AccessMode>RW</AccessMode><pPort>Device</pPort></Register>" +
            intReg("I", "0x200") +
            "<Register Name=\"Huge\"><Address>0</Address><Length>0x10000000000</Length>"
            "<pPort>Device</pPort></Register><Register Name=\"None\"><Address>0</Address>"
            "<pPort>Device</pPort></Register><IntReg Name=\"Wide\">" +
            registerAt("0", 9) + "</IntReg>");
    std::uint8_t bytes[8] = {};
    const CRegisterPtr x = map.reg("X");
    EXPECT_EQ("InvalidArgumentException: node 'X': 5 bytes can't be read from a register of 4",
              thrown([&] { x->Get(bytes, 5); }));
    EXPECT_EQ("InvalidArgumentException: node 'X': 5 bytes can't be written to a register of 4",
              thrown([&] { x->Set(bytes, 5); }));
    EXPECT_THROW(x->Get(bytes, 0), InvalidArgumentException);
    EXPECT_THROW(x->Get(bytes, -1), InvalidArgumentException);
    EXPECT_THROW(x->Get(nullptr, 4), InvalidArgumentException);
    EXPECT_THROW(x->Set(nullptr, 4), InvalidArgumentException);
    EXPECT_THROW(map.reg("I")->Set(bytes, 2), InvalidArgumentException); // a number is all of its bytes
    EXPECT_EQ("OutOfRangeException: node 'X': '0x0102' is not 4 bytes",
              thrown([&] { x->FromString("0x0102"); }));
    EXPECT_THROW(x->FromString("0x010"), InvalidArgumentException);
    EXPECT_THROW(x->FromString("bytes"), InvalidArgumentException);
    map.integer("Size")->SetValue(INT64_MAX);
    EXPECT_EQ("RuntimeException: node 'X': node 'Size' gives it a length of 9223372036854775807 bytes",
              thrown([&] { x->ToString(); }));
    map.integer("Size")->SetValue(-1);
    EXPECT_THROW(x->ToString(), RuntimeException);
    map.integer("Size")->SetValue(0); // a buffer that holds nothing now
    EXPECT_STREQ("0x", x->ToString().c_str());
    EXPECT_EQ("PropertyException: node 'Huge': a length of 1099511627776 bytes is absurd",
              thrown([&] { map.reg("Huge")->GetLength(); }));
    EXPECT_EQ("PropertyException: node 'None': Length is missing",
              thrown([&] { map.reg("None")->GetAddress(); }));
    EXPECT_EQ("PropertyException: node 'Wide': a register of 9 bytes doesn't hold its integer",
              thrown([&] { map.integer("Wide")->GetValue(); }));
    EXPECT_EQ(0U, map.port.Reads());
}

TEST(PlainRegister, OfANumberIsItsBytes) {
    Map map(intReg("I", "0x200"));
    map.integer("I")->SetValue(0x01020304);
    std::uint8_t bytes[4] = {};
    map.reg("I")->Get(bytes, 4);
    EXPECT_EQ(1, bytes[0]);
    bytes[3] = 5;
    map.reg("I")->Set(bytes, 4);
    EXPECT_EQ(0x01020305, map.integer("I")->GetValue());
    EXPECT_STREQ("16909061", map.value("I")->ToString().c_str());
}

// Categories

TEST(CategoryNode, ListsItsFeatures) {
    Map map(
        "<Category Name=\"Root\"><pFeature>Device</pFeature><pFeature>Sub</pFeature><pFeature>I</pFeature>"
        "<pFeature>Nobody</pFeature></Category><Category Name=\"Sub\"/><Integer "
        "Name=\"I\"><Value>1</Value></Integer>"
        "<Integer Name=\"Hidden\"><Value>1</Value></Integer>");
    FeatureList_t features;
    map.category("Root")->GetFeatures(features);
    ASSERT_EQ(2U, features.size()); // a port has no value, and nobody is no node
    EXPECT_STREQ("Sub", features[0]->GetNode()->GetName().c_str());
    EXPECT_STREQ("I", features[1]->GetNode()->GetName().c_str());
    EXPECT_TRUE(map.node("I")->IsFeature());
    EXPECT_TRUE(map.node("Sub")->IsFeature());
    EXPECT_FALSE(map.node("Hidden")->IsFeature());
    EXPECT_FALSE(map.node("Root")->IsFeature());
    EXPECT_STREQ("Root", map.value("Root")->ToString().c_str());
    EXPECT_THROW(map.value("Root")->FromString("x"), AccessException);
    EXPECT_THROW(map.value("Root")->FromString("x", false), AccessException);
}

} // namespace
