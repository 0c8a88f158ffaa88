// Which access mode a node has, by everything that stands behind it.
#include <gmock/gmock.h>

#include "platform/genapi/RuleMap.h"

namespace {

using namespace rules;

struct Row {
    const char* name;
    std::string nodes; // the node X is the one in question
    EAccessMode expected;
    std::uint32_t at0 = 0; // registers 0, 4 and 8
    std::uint32_t at4 = 0;
    std::uint32_t at8 = 0;
};

std::string IntegerOver(const std::string& reg, const std::string& conditions) {
    return Node("Integer", "X", conditions + "<pValue>" + reg + "</pValue>");
}

// X over register R at 100, with conditions C0, C4, C8 at 0, 4, 8.
std::string WithConditions(const std::string& conditions, const std::string& access = "RW") {
    return Reg("R", 100, "", access) + Reg("C0", 0) + Reg("C4", 4) + Reg("C8", 8) +
           IntegerOver("R", conditions);
}

const char* const kImplemented = "<pIsImplemented>C0</pIsImplemented>";
const char* const kAvailable = "<pIsAvailable>C4</pIsAvailable>";
const char* const kLocked = "<pIsLocked>C8</pIsLocked>";
const std::string kAll = std::string(kImplemented) + kAvailable + kLocked;

class AccessModeRule : public testing::TestWithParam<Row> {};

TEST_P(AccessModeRule, Holds) {
    const Row& row = GetParam();
    RuleMap rule(row.nodes);
    rule.Put(0, row.at0);
    rule.Put(4, row.at4);
    rule.Put(8, row.at8);
    EXPECT_EQ(rule.Mode("X"), row.expected);
    // The mode is what reading and writing find, too.
    const CValuePtr value = rule.Value("X");
    if (!value || CCommandPtr(rule.Get("X")) || CCategoryPtr(rule.Get("X"))) {
        return;
    }
    if (IsReadable(row.expected)) {
        EXPECT_NO_THROW(value->ToString());
    } else {
        EXPECT_THROW(value->ToString(), GenICam_3_0::AccessException);
    }
    if (!IsWritable(row.expected)) {
        EXPECT_THROW(value->FromString("1"), GenICam_3_0::AccessException);
    }
}

INSTANTIATE_TEST_SUITE_P(Conditions, AccessModeRule,
                         testing::Values( //
                             Row{"NoConditions", WithConditions(""), RW},
                             Row{"AllFine", WithConditions(kAll), RW, 1, 1, 0},
                             Row{"NotImplemented", WithConditions(kImplemented), NI, 0},
                             Row{"NotImplementedBeforeNotAvailable", WithConditions(kAll), NI, 0, 0, 0},
                             Row{"NotImplementedBeforeLocked", WithConditions(kAll), NI, 0, 1, 1},
                             Row{"NotAvailable", WithConditions(kAvailable), NA, 0, 0},
                             Row{"NotAvailableBeforeLocked", WithConditions(kAll), NA, 1, 0, 1},
                             Row{"Locked", WithConditions(kAll), RO, 1, 1, 1},
                             Row{"AnyNumberButZeroIsTrue", WithConditions(kAll), RO, 7, 8, 9},
                             Row{"LockedReadOnlyStays", WithConditions(kLocked, "RO"), RO, 0, 0, 1},
                             Row{"LockedWriteOnlyIsNotAvailable", WithConditions(kLocked, "WO"), NA, 0, 0, 1},
                             Row{"UnlockedWriteOnly", WithConditions(kLocked, "WO"), WO, 0, 0, 0}),
                         [](const auto& tested) { return std::string(tested.param.name); });

// A condition may be any node that can be read as a number or a switch.
INSTANTIATE_TEST_SUITE_P(
    KindsOfConditions, AccessModeRule,
    testing::Values( //
        Row{"SwissKnife",
            Reg("R", 100) + Reg("C", 0) +
                Node("IntSwissKnife", "K", "<pVariable Name=\"V\">C</pVariable><Formula>V = 5</Formula>") +
                IntegerOver("R", "<pIsAvailable>K</pIsAvailable>"),
            NA, 4},
        Row{"SwissKnifeTrue",
            Reg("R", 100) + Reg("C", 0) +
                Node("IntSwissKnife", "K", "<pVariable Name=\"V\">C</pVariable><Formula>V = 5</Formula>") +
                IntegerOver("R", "<pIsAvailable>K</pIsAvailable>"),
            RW, 5},
        Row{"Boolean",
            Reg("R", 100) + Reg("C", 0) +
                Node("Boolean", "K", "<pValue>C</pValue><OnValue>3</OnValue><OffValue>0</OffValue>") +
                IntegerOver("R", "<pIsLocked>K</pIsLocked>"),
            RO, 3},
        Row{"Enumeration",
            Reg("R", 100) + Reg("C", 0) +
                Node("Enumeration", "K",
                     "<EnumEntry Name=\"Off\"><Value>0</Value></EnumEntry><EnumEntry "
                     "Name=\"On\"><Value>1</Value></EnumEntry>"
                     "<pValue>C</pValue>") +
                IntegerOver("R", "<pIsLocked>K</pIsLocked>"),
            RO, 1},
        Row{"Constant",
            Reg("R", 100) + Node("Integer", "K", "<Value>0</Value>") +
                IntegerOver("R", "<pIsImplemented>K</pIsImplemented>"),
            NI},
        Row{"MaskedRegister",
            Reg("R", 100) +
                Node("MaskedIntReg", "K",
                     At(0) + "<Bit>31</Bit><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess>") +
                IntegerOver("R", "<pIsLocked>K</pIsLocked>"),
            RO, 1}),
    [](const auto& tested) { return std::string(tested.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Chains, AccessModeRule,
    testing::Values( //
        Row{"RegisterReadOnly", IntegerOver("R", "") + Reg("R", 100, "", "RO"), RO},
        Row{"RegisterWriteOnly", IntegerOver("R", "") + Reg("R", 100, "", "WO"), WO},
        Row{"RegisterItself", Reg("X", 100, "", "RO"), RO},
        Row{"NotAvailableBehind",
            Reg("R", 100) + Reg("C", 4) +
                Node("Integer", "M", "<pIsAvailable>C</pIsAvailable><pValue>R</pValue>") +
                IntegerOver("M", ""),
            NA},
        Row{"NotImplementedBehind",
            Reg("R", 100) + Reg("C", 4) +
                Node("Integer", "M", "<pIsImplemented>C</pIsImplemented><pValue>R</pValue>") +
                IntegerOver("M", ""),
            NI},
        Row{"NotImplementedBehindBeatsNotAvailable",
            Reg("R", 100) + Reg("C", 4) +
                Node("Integer", "M", "<pIsImplemented>C</pIsImplemented><pValue>R</pValue>") +
                IntegerOver("M", "<pIsAvailable>C</pIsAvailable>"),
            NI},
        Row{"LockedBehind",
            Reg("R", 100) + Reg("C", 4) + Node("Integer", "M", "<pIsLocked>C</pIsLocked><pValue>R</pValue>") +
                IntegerOver("M", ""),
            RO, 0, 1},
        Row{"ReadOnlyUnderWriteOnly",
            Reg("R", 100, "", "RO") + IntegerOver("R", "<ImposedAccessMode>WO</ImposedAccessMode>"), NA},
        Row{"ImposedReadOnly", Reg("R", 100) + IntegerOver("R", "<ImposedAccessMode>RO</ImposedAccessMode>"),
            RO},
        Row{"ImposedWriteOnly", Reg("R", 100) + IntegerOver("R", "<ImposedAccessMode>WO</ImposedAccessMode>"),
            WO},
        Row{"ImposedReadWriteAddsNothing",
            Reg("R", 100, "", "RO") + IntegerOver("R", "<ImposedAccessMode>RW</ImposedAccessMode>"), RO},
        Row{"ImposedOnTheRegister",
            Reg("R", 100, "<ImposedAccessMode>RO</ImposedAccessMode>") + IntegerOver("R", ""), RO},
        Row{"ConstantInteger", Node("Integer", "X", "<Value>5</Value>"), RW},
        Row{"ConstantIntegerImposed",
            Node("Integer", "X", "<ImposedAccessMode>RO</ImposedAccessMode><Value>5</Value>"), RO},
        Row{"ConstantIntegerLocked",
            Node("Integer", "X", "<pIsLocked>C</pIsLocked><Value>5</Value>") + Reg("C", 0), RO, 1},
        Row{"Converter",
            Reg("R", 100, "", "RO") +
                Node("Converter", "X",
                     "<FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom><pValue>R</pValue>"),
            RO},
        Row{"IntConverter",
            Reg("R", 100, "", "WO") +
                Node("IntConverter", "X",
                     "<FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom><pValue>R</pValue>"),
            WO},
        Row{"SwissKnifeIsReadOnly",
            Reg("R", 100) +
                Node("SwissKnife", "X", "<pVariable Name=\"V\">R</pVariable><Formula>V</Formula>"),
            RO},
        Row{"IntSwissKnifeIsReadOnly",
            Reg("R", 100) +
                Node("IntSwissKnife", "X", "<pVariable Name=\"V\">R</pVariable><Formula>V</Formula>"),
            RO},
        Row{"SwissKnifeOfWhatIsNotAvailable",
            Reg("R", 100) + Reg("C", 4) +
                Node("Integer", "M", "<pIsAvailable>C</pIsAvailable><pValue>R</pValue>") +
                Node("IntSwissKnife", "X", "<pVariable Name=\"V\">M</pVariable><Formula>V</Formula>"),
            NA},
        Row{"SwissKnifeOfWriteOnly",
            Reg("R", 100, "", "WO") +
                Node("IntSwissKnife", "X", "<pVariable Name=\"V\">R</pVariable><Formula>V</Formula>"),
            NA},
        Row{"Boolean", Reg("R", 100, "", "RO") + Node("Boolean", "X", "<pValue>R</pValue>"), RO},
        Row{"Enumeration",
            Reg("R", 100, "", "RO") +
                Node("Enumeration", "X",
                     "<EnumEntry Name=\"A\"><Value>0</Value></EnumEntry><pValue>R</pValue>"),
            RO},
        Row{"Command",
            Reg("R", 100, "", "WO") +
                Node("Command", "X", "<pValue>R</pValue><CommandValue>1</CommandValue>"),
            WO},
        Row{"CommandNotAvailable",
            Reg("R", 100, "", "WO") + Reg("C", 4) +
                Node("Command", "X",
                     "<pIsAvailable>C</pIsAvailable><pValue>R</pValue><CommandValue>1</CommandValue>"),
            NA},
        Row{"StringRegister", Node("StringReg", "X", At(100, 8, "RO")), RO},
        Row{"StringOverRegister",
            Node("StringReg", "R", At(100, 8, "RO")) + Node("String", "X", "<pValue>R</pValue>"), RO},
        Row{"PlainRegister", Node("Register", "X", At(100, 8, "WO")), WO}),
    [](const auto& tested) { return std::string(tested.param.name); });

TEST(AccessModeRule, FollowsTheConditionAsItChanges) {
    RuleMap rule(WithConditions(kAll));
    rule.Put(0, 1);
    rule.Put(4, 1);
    EXPECT_EQ(rule.Mode("X"), RW);
    rule.Int("C8")->SetValue(1);
    EXPECT_EQ(rule.Mode("X"), RO);
    rule.Int("C4")->SetValue(0);
    EXPECT_EQ(rule.Mode("X"), NA);
    rule.Int("C0")->SetValue(0);
    EXPECT_EQ(rule.Mode("X"), NI);
    rule.Int("C0")->SetValue(1);
    rule.Int("C4")->SetValue(1);
    rule.Int("C8")->SetValue(0);
    EXPECT_EQ(rule.Mode("X"), RW);
}

TEST(AccessModeRule, EnumEntriesHaveTheirOwn) {
    RuleMap rule(
        Reg("R", 100) + Reg("C0", 0) + Reg("C4", 4) +
        Node("Enumeration", "X",
             "<EnumEntry Name=\"A\"><Value>0</Value></EnumEntry>"
             "<EnumEntry Name=\"B\"><pIsImplemented>C0</pIsImplemented><Value>1</Value></EnumEntry>"
             "<EnumEntry "
             "Name=\"C\"><pIsAvailable>C4</pIsAvailable><Value>2</Value></EnumEntry><pValue>R</pValue>"));
    const CEnumerationPtr x = rule.Enum("X");
    const auto mode = [&](const char* entry) { return x->GetEntryByName(entry)->GetAccessMode(); };
    EXPECT_TRUE(IsReadable(mode("A")));
    EXPECT_EQ(mode("B"), NI);
    EXPECT_EQ(mode("C"), NA);
    StringList_t symbols;
    x->GetSymbolics(symbols);
    ASSERT_EQ(symbols.size(), 1U);
    EXPECT_STREQ(symbols[0].c_str(), "A");
    EXPECT_THROW(x->FromString("B"), GenICam_3_0::GenericException);
    EXPECT_THROW(x->SetIntValue(2), GenICam_3_0::GenericException);
    EXPECT_EQ(rule.Memory(100), 0U);
    rule.Int("C4")->SetValue(1);
    x->SetIntValue(2);
    EXPECT_EQ(rule.Memory(100), 2U);
}

TEST(AccessModeRule, WithoutAPortRegistersAreNotImplementedAndConstantsStay) {
    const RuleMap rule =
        RuleMap::Unconnected(Reg("R", 100) + IntegerOver("R", "") + Node("Integer", "K", "<Value>7</Value>"));
    EXPECT_EQ(rule.Mode("R"), NI);
    EXPECT_EQ(rule.Mode("X"), NI);
    EXPECT_EQ(rule.Mode("K"), RW);
    EXPECT_EQ(rule.Int("K")->GetValue(), 7);
    EXPECT_THROW(rule.Int("X")->GetValue(), GenICam_3_0::AccessException);
    EXPECT_THROW(rule.Int("X")->SetValue(1), GenICam_3_0::AccessException);
}

TEST(AccessModeRule, ConnectingAndDisconnectingAPortIsSeenAtOnce) {
    RuleMap rule(Reg("R", 100) + IntegerOver("R", ""));
    EXPECT_EQ(rule.Mode("X"), RW);
    EXPECT_TRUE(rule.map._Connect(nullptr, "Device"));
    EXPECT_EQ(rule.Mode("X"), NI);
    EXPECT_TRUE(rule.map._Connect(&rule.port, "Device"));
    EXPECT_EQ(rule.Mode("X"), RW);
    EXPECT_FALSE(rule.map._Connect(&rule.port, "NoSuchPort"));
}

TEST(AccessModeRule, APortThatCanNotBeReachedMakesItsRegistersNotAvailable) {
    RuleMap rule(Reg("R", 100) + IntegerOver("R", ""));
    rule.port.SetAccessMode(NA);
    EXPECT_EQ(rule.Mode("X"), NA);
    EXPECT_THROW(rule.Int("X")->GetValue(), GenICam_3_0::AccessException);
    EXPECT_EQ(rule.port.Reads(), 0U);
    rule.port.SetAccessMode(RO);
    rule.map._InvalidateNodes();
    EXPECT_EQ(rule.Mode("X"), RO);
}

TEST(AccessModeRule, ImposedFromOutsideNarrowsOnly) {
    RuleMap rule(Reg("R", 100) + IntegerOver("R", ""));
    rule.Get("X")->ImposeAccessMode(RO);
    EXPECT_EQ(rule.Mode("X"), RO);
    EXPECT_THROW(rule.Int("X")->SetValue(1), GenICam_3_0::AccessException);
    rule.Get("X")->ImposeAccessMode(RW);
    EXPECT_EQ(rule.Mode("X"), RW);
    rule.Get("R")->ImposeAccessMode(WO);
    EXPECT_EQ(rule.Mode("X"), WO);
}

TEST(AccessModeRule, OfACircleIsAnErrorOrAModeButNoHang) {
    const std::string circle = Node("Integer", "X", "<pIsAvailable>Y</pIsAvailable><Value>1</Value>") +
                               Node("Integer", "Y", "<pIsAvailable>X</pIsAvailable><Value>1</Value>");
    try {
        const RuleMap rule(circle);
        const EAccessMode mode = rule.Mode("X");
        EXPECT_TRUE(mode >= NI && mode <= RW);
    } catch (const GenICam_3_0::GenericException& error) {
        EXPECT_THAT(error.what(), testing::AnyOf(testing::HasSubstr("X"), testing::HasSubstr("Y")));
    }
}

TEST(AccessModeRule, RefusalsNameTheNodeAndItsMode) {
    RuleMap rule(Reg("R", 100, "", "RO") + Node("Integer", "ExposureSteps", "<pValue>R</pValue>"));
    try {
        rule.Int("ExposureSteps")->SetValue(5);
        FAIL() << "was written";
    } catch (const GenICam_3_0::AccessException& error) {
        EXPECT_THAT(error.GetDescription(), testing::HasSubstr("ExposureSteps"));
        EXPECT_GT(error.GetSourceLine(), 0U);
        EXPECT_THAT(error.GetSourceFileName(), testing::HasSubstr(".cpp"));
    }
    EXPECT_EQ(rule.port.Writes(), 0U);
}

} // namespace
