// Enumerations, switches, commands, and what nodes tell of themselves.
#include <gmock/gmock.h>

#include "platform/genapi/RuleMap.h"

namespace {

using namespace rules;
using GenICam_3_0::GenericException;
using GenICam_3_0::InvalidArgumentException;
using testing::ElementsAre;

const std::string kFormats =
    Reg("R", 0) +
    Node("Enumeration", "PixelFormat",
         "<EnumEntry Name=\"Mono8\" NameSpace=\"Standard\"><ToolTip>8 "
         "bits</ToolTip><Value>0x01080001</Value></EnumEntry>"
         "<EnumEntry Name=\"Mono12\"><DisplayName>Mono "
         "12</DisplayName><Value>17825797</Value><NumericValue>12.5</NumericValue></EnumEntry>"
         "<EnumEntry "
         "Name=\"Once\"><Value>7</Value><IsSelfClearing>Yes</IsSelfClearing></EnumEntry><pValue>R</pValue>");

TEST(EnumerationRule, HasValuesSymbolsAndEntries) {
    RuleMap rule(kFormats);
    const CEnumerationPtr x = rule.Enum("PixelFormat");
    x->FromString("Mono8");
    EXPECT_EQ(rule.Memory(0), 0x01080001U);
    EXPECT_STREQ(x->ToString().c_str(), "Mono8");
    EXPECT_EQ(x->GetIntValue(), 0x01080001);
    x->SetIntValue(17825797);
    EXPECT_STREQ(x->ToString().c_str(), "Mono12");
    EXPECT_STREQ(x->GetCurrentEntry()->GetSymbolic().c_str(), "Mono12");
    EXPECT_EQ(x->GetEntryByName("Mono12")->GetNumericValue(), 12.5);
    EXPECT_EQ(x->GetEntryByName("Once")->GetNumericValue(), 7);
    EXPECT_TRUE(x->GetEntryByName("Once")->IsSelfClearing());
    EXPECT_FALSE(x->GetEntryByName("Mono8")->IsSelfClearing());
    EXPECT_EQ(x->GetEntry(7)->GetValue(), 7);
    NodeList_t entries;
    x->GetEntries(entries);
    ASSERT_EQ(entries.size(), 3U);
    EXPECT_STREQ(entries[0]->GetToolTip().c_str(), "8 bits");
    EXPECT_STREQ(entries[1]->GetDisplayName().c_str(), "Mono 12");
    EXPECT_EQ(entries[0]->GetPrincipalInterfaceType(), intfIEnumEntry);
}

TEST(EnumerationRule, RefusesWhatIsNoEntry) {
    RuleMap rule(kFormats);
    const CEnumerationPtr x = rule.Enum("PixelFormat");
    EXPECT_EQ(x->GetEntryByName("Nothing"), nullptr);
    EXPECT_EQ(x->GetEntry(12345), nullptr);
    EXPECT_THROW(x->FromString("Nothing"), InvalidArgumentException);
    EXPECT_THROW(x->SetIntValue(12345), GenericException);
    EXPECT_THROW(x->FromString(""), GenericException);
    EXPECT_THROW(x->FromString("mono8"), GenericException) << "symbols are case-sensitive";
    EXPECT_EQ(rule.port.Writes(), 0U);
}

TEST(EnumerationRule, AValueWithoutAnEntryIsToldAsSuch) {
    RuleMap rule(kFormats);
    rule.Put(0, 99);
    const CEnumerationPtr x = rule.Enum("PixelFormat");
    EXPECT_EQ(x->GetCurrentEntry(), nullptr);
    try {
        x->ToString();
        FAIL() << "made up a symbol";
    } catch (const GenericException& error) {
        EXPECT_THAT(error.GetDescription(),
                    testing::AllOf(testing::HasSubstr("PixelFormat"), testing::HasSubstr("99")));
    }
}

TEST(EnumerationRule, EntriesOfTwoEnumerationsMayHaveTheSameName) {
    RuleMap rule(Reg("R", 0) + Reg("S", 4) +
                 Node("Enumeration", "One",
                      "<EnumEntry Name=\"Off\"><Value>0</Value></EnumEntry><EnumEntry "
                      "Name=\"On\"><Value>1</Value></EnumEntry><pValue>R</pValue>") +
                 Node("Enumeration", "Two",
                      "<EnumEntry Name=\"Off\"><Value>10</Value></EnumEntry><EnumEntry "
                      "Name=\"On\"><Value>11</Value></EnumEntry><pValue>S</pValue>"));
    rule.Enum("One")->FromString("On");
    rule.Enum("Two")->FromString("On");
    EXPECT_EQ(rule.Memory(0), 1U);
    EXPECT_EQ(rule.Memory(4), 11U);
    EXPECT_STREQ(rule.Enum("Two")->GetEntryByName("Off")->GetSymbolic().c_str(), "Off");
}

TEST(EnumerationRule, WithAConstantValueNeedsNoRegister) {
    RuleMap rule(Node("Enumeration", "X",
                      "<EnumEntry Name=\"A\"><Value>1</Value></EnumEntry><EnumEntry "
                      "Name=\"B\"><Value>2</Value></EnumEntry><Value>2</Value>"));
    EXPECT_STREQ(rule.Enum("X")->ToString().c_str(), "B");
    rule.Enum("X")->FromString("A");
    EXPECT_EQ(rule.Enum("X")->GetIntValue(), 1);
}

TEST(BooleanRule, MapsItsTwoValues) {
    RuleMap rule(Reg("R", 0) +
                 Node("Boolean", "X", "<pValue>R</pValue><OnValue>0x10</OnValue><OffValue>3</OffValue>") +
                 Reg("S", 4) + Node("Boolean", "Y", "<pValue>S</pValue>") +
                 Node("Boolean", "K", "<Value>1</Value>"));
    rule.Bool("X")->SetValue(true);
    EXPECT_EQ(rule.Memory(0), 16U);
    EXPECT_TRUE(rule.Bool("X")->GetValue());
    rule.Bool("X")->SetValue(false);
    EXPECT_EQ(rule.Memory(0), 3U);
    EXPECT_FALSE(rule.Bool("X")->GetValue());
    rule.Bool("Y")->SetValue(true);
    EXPECT_EQ(rule.Memory(4), 1U);
    EXPECT_TRUE(rule.Bool("K")->GetValue());
    rule.Bool("K")->SetValue(false);
    EXPECT_FALSE(rule.Bool("K")->GetValue());
}

TEST(BooleanRule, TextsOfBothFormsAreUnderstood) {
    RuleMap rule(Reg("R", 0) + Node("Boolean", "X", "<pValue>R</pValue>"));
    for (const char* on : {"1", "true", "True"}) {
        rule.Bool("X")->SetValue(false);
        rule.Value("X")->FromString(on);
        EXPECT_TRUE(rule.Bool("X")->GetValue()) << on;
    }
    rule.Value("X")->FromString("false");
    EXPECT_FALSE(rule.Bool("X")->GetValue());
    EXPECT_THROW(rule.Value("X")->FromString("maybe"), InvalidArgumentException);
    EXPECT_STREQ(rule.Value("X")->ToString().c_str(), "0");
}

TEST(CommandRule, WritesItsValueAndIsDoneWhenTheCameraClearsIt) {
    RuleMap rule(Reg("R", 0) + Node("Command", "X", "<pValue>R</pValue><CommandValue>5</CommandValue>"));
    rule.Command("X")->Execute();
    EXPECT_EQ(rule.Memory(0), 5U);
    EXPECT_FALSE(rule.Command("X")->IsDone());
    EXPECT_FALSE(rule.Command("X")->IsDone());
    rule.Put(0, 0);
    EXPECT_TRUE(rule.Command("X")->IsDone());
}

TEST(CommandRule, WithoutAReadableRegisterItIsDoneAtOnce) {
    RuleMap rule(Reg("R", 0, "", "WO") + Reg("V", 4) +
                 Node("Command", "X", "<pValue>R</pValue><pCommandValue>V</pCommandValue>"));
    rule.Put(4, 9);
    rule.Command("X")->Execute();
    EXPECT_EQ(rule.Memory(0), 9U);
    EXPECT_TRUE(rule.Command("X")->IsDone());
}

TEST(CommandRule, EachExecutionIsWritten) {
    RuleMap rule(Reg("R", 0) + Node("Command", "X", "<pValue>R</pValue><CommandValue>1</CommandValue>"));
    for (int i = 0; i < 3; ++i) {
        rule.Command("X")->Execute();
    }
    EXPECT_EQ(rule.port.Writes(), 3U);
}

TEST(NodeRule, TellsWhatTheXmlSays) {
    RuleMap rule("<Integer Name=\"Width\" NameSpace=\"Standard\"><ToolTip>tip</ToolTip><Description>words "
                 "&lt;more&gt;</Description>"
                 "<DisplayName>Image "
                 "Width</DisplayName><Visibility>Guru</Visibility><DocuURL>http://127.0.0.1/w</DocuURL>"
                 "<IsDeprecated>Yes</IsDeprecated><EventID>9001</EventID><Streamable>Yes</"
                 "Streamable><Value>1</Value></Integer>"
                 "<Integer Name=\"Plain\"><Value>1</Value></Integer>");
    INode* const x = rule.Get("Width");
    EXPECT_STREQ(x->GetToolTip().c_str(), "tip");
    EXPECT_STREQ(x->GetDescription().c_str(), "words <more>");
    EXPECT_STREQ(x->GetDisplayName().c_str(), "Image Width");
    EXPECT_EQ(x->GetVisibility(), Guru);
    EXPECT_STREQ(x->GetDocuURL().c_str(), "http://127.0.0.1/w");
    EXPECT_TRUE(x->IsDeprecated());
    EXPECT_STREQ(x->GetEventID().c_str(), "9001");
    EXPECT_TRUE(x->IsStreamable());
    EXPECT_EQ(x->GetNameSpace(), Standard);
    EXPECT_STREQ(x->GetName(true).c_str(), "Std::Width");
    EXPECT_STREQ(x->GetDeviceName().c_str(), "Device");
    INode* const plain = rule.Get("Plain");
    EXPECT_STREQ(plain->GetDisplayName().c_str(), "Plain");
    EXPECT_EQ(plain->GetVisibility(), Beginner);
    EXPECT_EQ(plain->GetNameSpace(), Custom);
    EXPECT_STREQ(plain->GetName(true).c_str(), "Cust::Plain");
    EXPECT_FALSE(plain->IsStreamable());
    EXPECT_FALSE(plain->IsDeprecated());
    EXPECT_FALSE(plain->IsFeature());
}

TEST(NodeRule, NamesMayCarryTheirNameSpace) {
    RuleMap rule("<Integer Name=\"Width\" NameSpace=\"Standard\"><Value>1</Value></Integer><Integer "
                 "Name=\"Mine\"><Value>1</Value></Integer>");
    EXPECT_EQ(rule.map._GetNode("Std::Width"), rule.Get("Width"));
    EXPECT_EQ(rule.map._GetNode("Cust::Mine"), rule.Get("Mine"));
    EXPECT_EQ(rule.map._GetNode("Cust::Width"), nullptr);
    EXPECT_EQ(rule.map._GetNode("width"), nullptr);
    EXPECT_EQ(rule.map._GetNode(""), nullptr);
}

TEST(NodeRule, AliasesAreFound) {
    RuleMap rule(Node("Integer", "ExposureRaw", "<pAlias>Exposure</pAlias><Value>1</Value>") +
                 Node("Float", "Exposure", "<pCastAlias>ExposureRaw</pCastAlias><Value>1</Value>"));
    EXPECT_EQ(rule.Get("ExposureRaw")->GetAlias(), rule.Get("Exposure"));
    EXPECT_EQ(rule.Get("Exposure")->GetCastAlias(), rule.Get("ExposureRaw"));
    EXPECT_EQ(rule.Get("Exposure")->GetAlias(), nullptr);
}

TEST(NodeRule, ImposedVisibilityHidesMore) {
    RuleMap rule(Node("Integer", "X", "<Visibility>Expert</Visibility><Value>1</Value>"));
    rule.Get("X")->ImposeVisibility(Invisible);
    EXPECT_EQ(rule.Get("X")->GetVisibility(), Invisible);
    rule.Get("X")->ImposeVisibility(Beginner);
    EXPECT_EQ(rule.Get("X")->GetVisibility(), Expert);
}

TEST(NodeRule, PrincipalInterfacesByKind) {
    const std::string knife = "<Formula>1</Formula>";
    const std::string converter =
        "<FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom><pValue>IntReg</pValue>";
    const std::string endian = "<Endianess>BigEndian</Endianess>";
    RuleMap rule(
        Node("IntReg", "IntReg", At(0) + endian) +
        Node("MaskedIntReg", "MaskedIntReg", At(4) + "<Bit>0</Bit>" + endian) +
        Node("Integer", "Integer", "<Value>1</Value>") + Node("IntSwissKnife", "IntSwissKnife", knife) +
        Node("IntConverter", "IntConverter", converter) + Node("FloatReg", "FloatReg", At(8) + endian) +
        Node("Float", "Float", "<Value>1</Value>") + Node("SwissKnife", "SwissKnife", knife) +
        Node("Converter", "Converter", converter) + Node("Boolean", "Boolean", "<pValue>IntReg</pValue>") +
        Node("Command", "Command", "<pValue>IntReg</pValue><CommandValue>1</CommandValue>") +
        Node("Enumeration", "Enumeration",
             "<EnumEntry Name=\"E\"><Value>0</Value></EnumEntry><pValue>IntReg</pValue>") +
        Node("StringReg", "StringReg", At(16, 8)) + Node("String", "String", "<Value>a</Value>") +
        Node("Register", "Register", At(24, 8)) +
        Node("Category", "Category", "<pFeature>Integer</pFeature>"));
    struct {
        const char* name;
        EInterfaceType type;
    } const rows[] = {
        {"IntReg", intfIInteger},        {"MaskedIntReg", intfIInteger}, {"Integer", intfIInteger},
        {"IntSwissKnife", intfIInteger}, {"IntConverter", intfIInteger}, {"FloatReg", intfIFloat},
        {"Float", intfIFloat},           {"SwissKnife", intfIFloat},     {"Converter", intfIFloat},
        {"Boolean", intfIBoolean},       {"Command", intfICommand},      {"Enumeration", intfIEnumeration},
        {"StringReg", intfIString},      {"String", intfIString},        {"Register", intfIRegister},
        {"Category", intfICategory},     {"Device", intfIPort}};
    for (const auto& row : rows) {
        EXPECT_EQ(rule.Get(row.name)->GetPrincipalInterfaceType(), row.type) << row.name;
    }
    EXPECT_TRUE(rule.Register("IntReg").IsValid());
    EXPECT_TRUE(rule.Register("FloatReg").IsValid());
    EXPECT_TRUE(rule.Register("StringReg").IsValid());
    EXPECT_FALSE(rule.Register("Integer").IsValid());
    EXPECT_FALSE(rule.Float("Integer").IsValid());
    EXPECT_FALSE(rule.Int("Float").IsValid());
    EXPECT_THROW(rule.Int("Float")->GetValue(), GenericException) << "an invalid pointer says so";
}

TEST(CategoryRule, ListsItsFeaturesInOrder) {
    RuleMap rule(Node("Category", "Root", "<pFeature>Image</pFeature><pFeature>Missing</pFeature>") +
                 Node("Category", "Image", "<pFeature>Width</pFeature><pFeature>Height</pFeature>") +
                 Node("Integer", "Height", "<Value>1</Value>") +
                 Node("Integer", "Width", "<Value>1</Value>") +
                 Node("Integer", "Hidden", "<Value>1</Value>"));
    FeatureList_t features;
    CCategoryPtr(rule.Get("Image"))->GetFeatures(features);
    EXPECT_THAT(Names(features), ElementsAre("Width", "Height"));
    features.clear();
    CCategoryPtr(rule.Get("Root"))->GetFeatures(features);
    EXPECT_THAT(Names(features), ElementsAre("Image"));
    EXPECT_TRUE(rule.Get("Width")->IsFeature());
    EXPECT_FALSE(rule.Get("Hidden")->IsFeature());
    EXPECT_TRUE(IsReadable(rule.Mode("Image")));
}

TEST(SelectorRule, SelectedAndSelectingKnowOneAnother) {
    RuleMap rule(Reg("R", 0) +
                 Node("Enumeration", "SEL",
                      "<EnumEntry "
                      "Name=\"A\"><Value>0</Value></EnumEntry><pValue>R</pValue><pSelected>X</"
                      "pSelected><pSelected>Y</pSelected>") +
                 Node("Integer", "CHANNEL", "<Value>0</Value><pSelected>Y</pSelected>") +
                 Node("Integer", "X", "<Value>1</Value>") + Node("Float", "Y", "<Value>1</Value>"));
    FeatureList_t list;
    CSelectorPtr(rule.Get("SEL"))->GetSelectedFeatures(list);
    EXPECT_THAT(Names(list), ElementsAre("X", "Y"));
    list.clear();
    CSelectorPtr(rule.Get("Y"))->GetSelectingFeatures(list);
    EXPECT_THAT(Names(list), testing::UnorderedElementsAre("SEL", "CHANNEL"));
    EXPECT_TRUE(CSelectorPtr(rule.Get("SEL"))->IsSelector());
    EXPECT_TRUE(CSelectorPtr(rule.Get("CHANNEL"))->IsSelector());
    EXPECT_FALSE(CSelectorPtr(rule.Get("X"))->IsSelector());
}

TEST(DeviceRule, HeaderIsTold) {
    RuleMap rule("");
    EXPECT_STREQ(rule.map._GetModelName().c_str(), "Rule");
    EXPECT_STREQ(rule.map._GetVendorName().c_str(), "Kolt");
    EXPECT_STREQ(rule.map._GetDeviceName().c_str(), "Device");
    GenICam_3_0::Version_t version{};
    rule.map._GetSchemaVersion(version);
    EXPECT_EQ(version.Major, 1);
    EXPECT_EQ(version.Minor, 1);
    rule.map._GetDeviceVersion(version);
    EXPECT_EQ(version.Minor, 2);
    EXPECT_EQ(version.SubMinor, 3);
    EXPECT_STRCASEEQ(rule.map._GetProductGuid().c_str(), "11111111-2222-3333-4444-555555555555");
}

TEST(SchemaRule, VersionOnePointNoughtAndOnePointOneLoad) {
    for (const int minor : {0, 1}) {
        RuleMap rule(Reg("R", 0) + Node("Integer", "X", "<pValue>R</pValue>"), minor);
        rule.Int("X")->SetValue(3);
        EXPECT_EQ(rule.Memory(0), 3U);
    }
}

TEST(SchemaRule, CommentsAndCharacterDataDoNotCutTextsShort) {
    RuleMap rule(
        Node("IntSwissKnife", "X", "<Formula>1 + <!-- one more --> 2 <![CDATA[<< 3]]> + 0</Formula>") +
        Node("IntSwissKnife", "Y", "<Formula><![CDATA[(5 > 4) ? 7 : 8]]></Formula>") +
        Node("IntSwissKnife", "Z", "<!-- first --><Formula><!-- inside -->9</Formula>"));
    EXPECT_EQ(rule.Int("X")->GetValue(), 24);
    EXPECT_EQ(rule.Int("Y")->GetValue(), 7);
    EXPECT_EQ(rule.Int("Z")->GetValue(), 9);
}

TEST(SchemaRule, GroupsExtensionsAndUnknownElementsDoNotDisturb) {
    RuleMap rule(
        "<Group Comment=\"outer\"><Group Comment=\"inner\">" +
        Node("Integer", "X",
             "<Extension><Maker><Value>9</Value></Maker></Extension><Novelty>5</Novelty><Value>1</Value>") +
        "</Group></Group><!-- a comment --><NovelNode Name=\"N\"><Value>1</Value></NovelNode>");
    EXPECT_EQ(rule.Int("X")->GetValue(), 1);
}

} // namespace
