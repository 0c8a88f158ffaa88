// Access modes through every chain by which one node stands on another.
#include <functional>

#include "platform/genapi/NodeMapFixture.h"

namespace {

using namespace genapi_test;

// Switches at fixed addresses that the rows below refer to, and registers of each mode.
const char* const kSwitches = R"(
<IntReg Name="On"><Address>0x00</Address><Length>1</Length><AccessMode>RO</AccessMode><pPort>Device</pPort></IntReg>
<IntReg Name="Off"><Address>0x01</Address><Length>1</Length><AccessMode>RO</AccessMode><pPort>Device</pPort></IntReg>
<IntReg Name="RegRW"><Address>0x10</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg>
<IntReg Name="RegRO"><Address>0x14</Address><Length>4</Length><AccessMode>RO</AccessMode><pPort>Device</pPort></IntReg>
<IntReg Name="RegWO"><Address>0x18</Address><Length>4</Length><AccessMode>WO</AccessMode><pPort>Device</pPort></IntReg>
<IntReg Name="RegNI"><pIsImplemented>Off</pIsImplemented>
  <Address>0x1C</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg>
<IntReg Name="RegNA"><pIsAvailable>Off</pIsAvailable>
  <Address>0x20</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg>
<IntReg Name="RegLocked"><pIsLocked>On</pIsLocked>
  <Address>0x24</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg>
<Port Name="Other"/>
<IntReg Name="RegElsewhere"><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Other</pPort></IntReg>
<StringReg Name="TextRO"><Address>0x40</Address><Length>8</Length><AccessMode>RO</AccessMode><pPort>Device</pPort></StringReg>
)";

struct ModeRow {
    const char* what;
    EAccessMode mode;
    const char* nodes; // defines "X"
};

class AccessMode : public testing::TestWithParam<ModeRow> {};

TEST_P(AccessMode, IsWorkedOut) {
    Map map(std::string(kSwitches) + GetParam().nodes);
    map.port.Store(0, {1, 0});
    EXPECT_EQ(GetParam().mode, map.mode("X"));
}

#define INTEGER(inside) "<Integer Name=\"X\">" inside "</Integer>"
#define REGISTER(inside)                                                                                     \
    "<IntReg Name=\"X\">" inside "<Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></"      \
    "IntReg>"

INSTANTIATE_TEST_SUITE_P(
    Conditions, AccessMode,
    testing::Values(
        ModeRow{"constant", RW, INTEGER("<Value>1</Value>")},
        ModeRow{"implemented", RW, INTEGER("<pIsImplemented>On</pIsImplemented><Value>1</Value>")},
        ModeRow{"notImplemented", NI, INTEGER("<pIsImplemented>Off</pIsImplemented><Value>1</Value>")},
        ModeRow{"available", RW, INTEGER("<pIsAvailable>On</pIsAvailable><Value>1</Value>")},
        ModeRow{"notAvailable", NA, INTEGER("<pIsAvailable>Off</pIsAvailable><Value>1</Value>")},
        ModeRow{"notLocked", RW, INTEGER("<pIsLocked>Off</pIsLocked><Value>1</Value>")},
        ModeRow{"locked", RO, INTEGER("<pIsLocked>On</pIsLocked><Value>1</Value>")},
        ModeRow{
            "niBeforeNa", NI,
            INTEGER("<pIsAvailable>Off</pIsAvailable><pIsImplemented>Off</pIsImplemented><Value>1</Value>")},
        ModeRow{"naBeforeLocked", NA,
                INTEGER("<pIsLocked>On</pIsLocked><pIsAvailable>Off</pIsAvailable><Value>1</Value>")},
        ModeRow{"lockedWriteOnlyIsNotAvailable", NA,
                INTEGER("<pIsLocked>On</pIsLocked><pValue>RegWO</pValue>")},
        ModeRow{"lockedReadOnly", RO, INTEGER("<pIsLocked>On</pIsLocked><pValue>RegRO</pValue>")},
        // A condition that can't be read isn't met.
        ModeRow{"implementedUnreadable", NI,
                INTEGER("<pIsImplemented>RegNA</pIsImplemented><Value>1</Value>")},
        ModeRow{"availableUnreadable", NA, INTEGER("<pIsAvailable>RegNI</pIsAvailable><Value>1</Value>")},
        ModeRow{"lockUnreadable", RW, INTEGER("<pIsLocked>RegWO</pIsLocked><Value>1</Value>")},
        // Conditions may be any number, and a lock may itself be locked.
        ModeRow{"lockIsLocked", RO,
                "<Integer Name=\"L\"><pIsLocked>On</pIsLocked><Value>1</Value></Integer>" INTEGER(
                    "<pIsLocked>L</pIsLocked><Value>1</Value>")},
        ModeRow{"booleanCondition", NI,
                "<Boolean Name=\"B\"><Value>false</Value></Boolean>" INTEGER(
                    "<pIsImplemented>B</pIsImplemented><Value>1</Value>")},
        ModeRow{"formulaCondition", NA,
                "<IntSwissKnife Name=\"K\"><pVariable Name=\"V\">On</pVariable><Formula>V = 0</Formula>"
                "</IntSwissKnife>" INTEGER("<pIsAvailable>K</pIsAvailable><Value>1</Value>")}),
    [](const auto& row) { return row.param.what; });

INSTANTIATE_TEST_SUITE_P(
    Imposed, AccessMode,
    testing::Values(
        ModeRow{"readOnly", RO, INTEGER("<ImposedAccessMode>RO</ImposedAccessMode><pValue>RegRW</pValue>")},
        ModeRow{"writeOnly", WO, INTEGER("<ImposedAccessMode>WO</ImposedAccessMode><pValue>RegRW</pValue>")},
        ModeRow{"readWriteGivesNothing", RO,
                INTEGER("<ImposedAccessMode>RW</ImposedAccessMode><pValue>RegRO</pValue>")},
        ModeRow{"contradiction", NA,
                INTEGER("<ImposedAccessMode>RO</ImposedAccessMode><pValue>RegWO</pValue>")},
        ModeRow{"notAvailable", NA,
                INTEGER("<ImposedAccessMode>NA</ImposedAccessMode><pValue>RegRW</pValue>")},
        ModeRow{"notImplemented", NI,
                INTEGER("<ImposedAccessMode>NI</ImposedAccessMode><pValue>RegRW</pValue>")}),
    [](const auto& row) { return row.param.what; });

INSTANTIATE_TEST_SUITE_P(
    ThroughPValue, AccessMode,
    testing::Values(
        ModeRow{"rw", RW, INTEGER("<pValue>RegRW</pValue>")},
        ModeRow{"ro", RO, INTEGER("<pValue>RegRO</pValue>")},
        ModeRow{"wo", WO, INTEGER("<pValue>RegWO</pValue>")},
        ModeRow{"ni", NI, INTEGER("<pValue>RegNI</pValue>")},
        ModeRow{"na", NA, INTEGER("<pValue>RegNA</pValue>")},
        ModeRow{"locked", RO, INTEGER("<pValue>RegLocked</pValue>")},
        ModeRow{"twoSteps", NI,
                "<Integer Name=\"Y\"><pValue>RegNI</pValue></Integer>" INTEGER("<pValue>Y</pValue>")},
        ModeRow{"niBelowNa", NI, INTEGER("<pIsAvailable>Off</pIsAvailable><pValue>RegNI</pValue>")},
        ModeRow{"float", RO, "<Float Name=\"X\"><pValue>RegRO</pValue></Float>"},
        ModeRow{"boolean", WO, "<Boolean Name=\"X\"><pValue>RegWO</pValue></Boolean>"},
        ModeRow{"enumeration", RO,
                "<Enumeration Name=\"X\"><EnumEntry Name=\"A\"><Value>0</Value></EnumEntry>"
                "<pValue>RegLocked</pValue></Enumeration>"},
        ModeRow{"command", WO,
                "<Command Name=\"X\"><pValue>RegWO</pValue><CommandValue>1</CommandValue></Command>"},
        ModeRow{"commandWithoutItsValue", NA,
                "<Command Name=\"X\"><pValue>RegWO</pValue><pCommandValue>RegNA</pCommandValue></Command>"},
        ModeRow{"string", RO, "<String Name=\"X\"><pValue>TextRO</pValue></String>"},
        ModeRow{"copyThatCannotBeWritten", RO,
                INTEGER("<pValue>RegRW</pValue><pValueCopy>RegRO</pValueCopy>")},
        ModeRow{"copyThatCanBeWritten", RW, INTEGER("<pValue>RegRW</pValue><pValueCopy>RegWO</pValueCopy>")}),
    [](const auto& row) { return row.param.what; });

INSTANTIATE_TEST_SUITE_P(
    ThroughAddresses, AccessMode,
    testing::Values(
        ModeRow{"fixed", RW, REGISTER("<Address>0x30</Address>")},
        ModeRow{"pAddress", RW, REGISTER("<pAddress>RegRO</pAddress>")},
        ModeRow{"pAddressNa", NA, REGISTER("<pAddress>RegNA</pAddress>")},
        ModeRow{"pAddressNi", NI, REGISTER("<pAddress>RegNI</pAddress>")},
        ModeRow{"pAddressWriteOnly", NA, REGISTER("<pAddress>RegWO</pAddress>")},
        ModeRow{"pIndexNa", NA, REGISTER("<Address>0x30</Address><pIndex Offset=\"4\">RegNA</pIndex>")},
        ModeRow{"pIndexLocked", RW,
                REGISTER("<Address>0x30</Address><pIndex Offset=\"4\">RegLocked</pIndex>")},
        ModeRow{"pOffsetNi", NI, REGISTER("<Address>0x30</Address><pIndex pOffset=\"RegNI\">RegRO</pIndex>")},
        ModeRow{"formulaNa", NA,
                REGISTER("<IntSwissKnife Name=\"K\"><pVariable Name=\"V\">RegNA</pVariable>"
                         "<Formula>V</Formula></IntSwissKnife>")},
        ModeRow{
            "lengthNa", NA,
            "<Register Name=\"X\"><Address>0x30</Address><pLength>RegNA</pLength><AccessMode>RW</AccessMode>"
            "<pPort>Device</pPort></Register>"},
        ModeRow{"noAccessModeIsReadOnly", RO,
                "<IntReg Name=\"X\"><Address>0x30</Address><Length>4</Length><pPort>Device</pPort></IntReg>"},
        ModeRow{"portNotConnected", NI, INTEGER("<pValue>RegElsewhere</pValue>")}),
    [](const auto& row) { return row.param.what; });

INSTANTIATE_TEST_SUITE_P(
    ThroughVariables, AccessMode,
    testing::Values(
        ModeRow{"swissKnifeOfReadable", RO,
                "<SwissKnife Name=\"X\"><pVariable "
                "Name=\"V\">RegRW</pVariable><Formula>V</Formula></SwissKnife>"},
        ModeRow{"swissKnifeOfNa", NA,
                "<SwissKnife Name=\"X\"><pVariable "
                "Name=\"V\">RegNA</pVariable><Formula>V</Formula></SwissKnife>"},
        ModeRow{"intSwissKnifeOfNi", NI,
                "<IntSwissKnife Name=\"X\"><pVariable Name=\"V\">RegRW</pVariable><pVariable "
                "Name=\"W\">RegNI</pVariable>"
                "<Formula>V+W</Formula></IntSwissKnife>"},
        ModeRow{"intSwissKnifeOfWriteOnly", NA,
                "<IntSwissKnife Name=\"X\"><pVariable "
                "Name=\"V\">RegWO</pVariable><Formula>V</Formula></IntSwissKnife>"},
        ModeRow{"constantFormula", RO, "<SwissKnife Name=\"X\"><Formula>1.5</Formula></SwissKnife>"},
        ModeRow{"converter", RW,
                "<Converter "
                "Name=\"X\"><FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom><pValue>RegRW</pValue>"
                "</Converter>"},
        ModeRow{"converterWriteOnly", WO,
                "<IntConverter "
                "Name=\"X\"><FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom><pValue>RegWO</pValue>"
                "</IntConverter>"},
        ModeRow{"converterVariableNa", NA,
                "<Converter Name=\"X\"><pVariable Name=\"V\">RegNA</pVariable><FormulaTo>FROM*V</FormulaTo>"
                "<FormulaFrom>TO/V</FormulaFrom><pValue>RegRW</pValue></Converter>"},
        ModeRow{"converterLockedValue", RO,
                "<Converter Name=\"X\"><FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom>"
                "<pValue>RegLocked</pValue></Converter>"}),
    [](const auto& row) { return row.param.what; });

INSTANTIATE_TEST_SUITE_P(
    ThroughIndices, AccessMode,
    testing::Values(ModeRow{"chosenReadOnly", RO,
                            INTEGER("<pIndex>On</pIndex><pValueIndexed Index=\"0\">RegRW</pValueIndexed>"
                                    "<pValueIndexed Index=\"1\">RegRO</pValueIndexed>")},
                    ModeRow{"chosenConstant", RW,
                            INTEGER("<pIndex>On</pIndex><pValueIndexed Index=\"0\">RegRO</pValueIndexed>"
                                    "<ValueIndexed Index=\"1\">7</ValueIndexed>")},
                    ModeRow{"default", NI,
                            INTEGER("<pIndex>On</pIndex><ValueIndexed Index=\"5\">7</ValueIndexed>"
                                    "<pValueDefault>RegNI</pValueDefault>")},
                    ModeRow{"indexNa", NA, INTEGER("<pIndex>RegNA</pIndex><ValueDefault>1</ValueDefault>")}),
    [](const auto& row) { return row.param.what; });

INSTANTIATE_TEST_SUITE_P(
    OtherKinds, AccessMode,
    testing::Values(ModeRow{"category", RO, "<Category Name=\"X\"/>"},
                    ModeRow{"categoryNotImplemented", NI,
                            "<Category Name=\"X\"><pIsImplemented>Off</pIsImplemented></Category>"},
                    ModeRow{"port", NI, "<Port Name=\"X\"/>"}, ModeRow{"node", RO, "<Node Name=\"X\"/>"},
                    ModeRow{"confRom", RO, "<ConfRom Name=\"X\"/>"}),
    [](const auto& row) { return row.param.what; });

TEST(AccessModePort, NothingIsImplementedUntilAPortIsConnected) {
    Map map(std::string(kSwitches), false);
    EXPECT_EQ(NI, map.mode("RegRW"));
    EXPECT_EQ(NI, map.mode("Device"));
    EXPECT_TRUE(map.ref()._Connect(&map.port));
    EXPECT_EQ(RW, map.mode("RegRW"));
    EXPECT_EQ(RW, map.mode("Device"));
    EXPECT_TRUE(map.ref()._Connect(nullptr));
    EXPECT_EQ(NI, map.mode("RegRW"));
    EXPECT_FALSE(map.ref()._Connect(&map.port, "Nowhere"));
    EXPECT_FALSE(map.ref()._Connect(&map.port, "RegRW"));
}

TEST(AccessModePort, FollowsThePortsOwnMode) {
    Map map(std::string(kSwitches) + "<Integer Name=\"X\"><pValue>RegRW</pValue></Integer>");
    for (const EAccessMode mode : {RW, RO, WO, NA, NI, RW}) {
        map.port.SetAccessMode(mode);
        EXPECT_EQ(mode, map.mode("X"));
    }
}

TEST(AccessModePort, FollowsThePortNodesOwnConditions) {
    Map map("<Integer Name=\"Here\"><Value>1</Value></Integer>"
            "<Port Name=\"Second\"><pIsAvailable>Here</pIsAvailable></Port>"
            "<IntReg Name=\"X\"><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode>"
            "<pPort>Second</pPort></IntReg>");
    map.ref()._Connect(&map.port, "Second");
    EXPECT_EQ(RW, map.mode("X"));
    map.integer("Here")->SetValue(0);
    EXPECT_EQ(NA, map.mode("X"));
    map.integer("Here")->SetValue(1);
    map.node("Second")->ImposeAccessMode(RO);
    EXPECT_EQ(RO, map.mode("X"));
}

TEST(AccessModeReason, IsToldWithTheValueThatWasToBeWritten) {
    const std::string locked = "<ImposedAccessMode>RO</ImposedAccessMode>";
    Map map("<Integer Name=\"I\">" + locked + "<Value>0</Value></Integer><Float Name=\"F\">" + locked +
            "<Value>0</Value></Float><Boolean Name=\"B\">" + locked +
            "<Value>0</Value></Boolean><String Name=\"S\">" + locked +
            "<Value>a</Value></String><Enumeration Name=\"E\">" + locked +
            "<EnumEntry Name=\"On\"><Value>1</Value></EnumEntry><Value>1</Value></Enumeration>"
            "<Register Name=\"R\">" +
            registerAt("0x100", 4, "RO") + "</Register>");
    const std::pair<const char*, std::function<void()>> rows[] = {
        {"node 'I' can't be set to 5", [&] { map.integer("I")->SetValue(5); }},
        {"node 'I' can't be set to '0x5'", [&] { map.value("I")->FromString("0x5"); }},
        {"node 'F' can't be set to 0.5", [&] { map.floating("F")->SetValue(0.5); }},
        {"node 'B' can't be set to 1", [&] { map.boolean("B")->SetValue(true); }},
        {"node 'S' can't be set to 'b'", [&] { map.string("S")->SetValue("b"); }},
        {"node 'E' can't be set to 1 ('On')", [&] { map.enumeration("E")->SetIntValue(1); }},
        {"node 'E' can't be set to 'On'", [&] { map.value("E")->FromString("On"); }},
        {"node 'R' can't be written",
         [&] { map.reg("R")->Set(reinterpret_cast<const std::uint8_t*>("abc"), 4); }},
    };
    for (const auto& [begin, write] : rows)
        EXPECT_EQ("AccessException: " + std::string(begin) + ": it can only be read now", thrown(write));
}

TEST(AccessModeReason, IsToldWithTheNodesName) {
    Map map(std::string(kSwitches) + "<Integer Name=\"X\"><pValue>RegLocked</pValue></Integer>");
    map.port.Store(0, {1, 0});
    EXPECT_EQ("AccessException: node 'X' can't be set to 1: it can only be read now",
              thrown([&] { map.integer("X")->SetValue(1); }));
    EXPECT_EQ("AccessException: node 'RegWO' can't be read: it can only be written",
              thrown([&] { map.integer("RegWO")->GetValue(); }));
    EXPECT_EQ("AccessException: node 'RegNA' can't be read: it is not available now",
              thrown([&] { map.integer("RegNA")->GetValue(); }));
    EXPECT_EQ("AccessException: node 'RegNI' can't be set to 1: it is not implemented",
              thrown([&] { map.integer("RegNI")->SetValue(1); }));
    EXPECT_EQ(0U, map.port.Writes());
    // Without verification the mode doesn't bind the writer: the camera has the last word.
    map.integer("X")->SetValue(7, false);
    EXPECT_EQ(1U, map.port.Writes());
}

// Two features that each lock the other while they are on are no cycle: a lock never takes away reading.
TEST(AccessModeCycle, FeaturesMayLockEachOther) {
    Map map(intReg("A", "0x100", "<pIsLocked>B</pIsLocked>") +
            intReg("B", "0x104", "<pIsLocked>A</pIsLocked>"));
    EXPECT_EQ(RW, map.mode("A"));
    map.integer("A")->SetValue(1);
    EXPECT_EQ(RW, map.mode("A"));
    EXPECT_EQ(RO, map.mode("B"));
}

TEST(AccessModeCycle, OneThatDependsOnItselfIsAnError) {
    Map map(intReg("A", "0x100", "<pIsAvailable>B</pIsAvailable>") +
            intReg("B", "0x104", "<pIsAvailable>A</pIsAvailable>") + intReg("C", "0x108"));
    // The node at which the circle closes is named.
    EXPECT_EQ("RuntimeException: node 'B': its access mode depends on itself",
              thrown([&] { map.mode("A"); }));
    EXPECT_EQ("RuntimeException: node 'A': its access mode depends on itself",
              thrown([&] { map.mode("B"); }));
    EXPECT_EQ(RW, map.mode("C"));
}

TEST(AccessModeChanges, AreSeenWhenAConditionIsWritten) {
    Map map(intReg("Lock", "0x100") +
            "<Integer Name=\"X\"><pIsLocked>Lock</pIsLocked><Value>1</Value></Integer>"
            "<Integer Name=\"Y\"><pValue>X</pValue></Integer>");
    EXPECT_EQ(RW, map.mode("Y"));
    map.integer("Lock")->SetValue(1);
    EXPECT_EQ(RO, map.mode("Y"));
    map.integer("Lock")->SetValue(0);
    EXPECT_EQ(RW, map.mode("Y"));
}

TEST(AccessModeChanges, OfAnUncachedConditionAreSeenAtOnce) {
    Map map(intReg("Lock", "0x100", "<Cachable>NoCache</Cachable>", 4, "RO") +
            "<Integer Name=\"X\"><pIsLocked>Lock</pIsLocked><Value>1</Value></Integer>");
    EXPECT_EQ(RW, map.mode("X"));
    map.port.StoreInteger(0x100, 4, 1);
    EXPECT_EQ(RO, map.mode("X"));
    EXPECT_EQ(No, map.node("X")->IsAccessModeCacheable());
    EXPECT_EQ(Yes, map.node("Lock")->IsAccessModeCacheable());
}

TEST(AccessModeImposedFromOutside, NarrowsAndIsTakenBack) {
    Map map(intReg("Reg", "0x100") + "<Integer Name=\"X\"><pValue>Reg</pValue></Integer>");
    map.node("Reg")->ImposeAccessMode(RO);
    EXPECT_EQ(RO, map.mode("X"));
    EXPECT_THROW(map.integer("X")->SetValue(1), AccessException);
    map.node("Reg")->ImposeAccessMode(RW);
    EXPECT_EQ(RW, map.mode("X"));
    EXPECT_THROW(map.node("Reg")->ImposeAccessMode(_UndefinedAccesMode), InvalidArgumentException);
}

TEST(AccessModeOfEntries, IsTheirOwn) {
    Map map(std::string(kSwitches) + R"(<Enumeration Name="E">
<EnumEntry Name="Plain"><Value>0</Value></EnumEntry>
<EnumEntry Name="NotImplemented"><pIsImplemented>Off</pIsImplemented><Value>1</Value></EnumEntry>
<EnumEntry Name="NotAvailable"><pIsAvailable>Off</pIsAvailable><Value>2</Value></EnumEntry>
<EnumEntry Name="Locked"><pIsLocked>On</pIsLocked><Value>3</Value></EnumEntry>
<pValue>RegRW</pValue></Enumeration>)");
    map.port.Store(0, {1, 0});
    EXPECT_EQ(RO, map.mode("EnumEntry_E_Plain"));
    EXPECT_EQ(NI, map.mode("EnumEntry_E_NotImplemented"));
    EXPECT_EQ(NA, map.mode("EnumEntry_E_NotAvailable"));
    gcstring_vector symbolics;
    map.enumeration("E")->GetSymbolics(symbolics);
    EXPECT_EQ((gcstring_vector{"Plain", "Locked"}), symbolics);
    EXPECT_EQ(
        "AccessException: node 'E': entry 'NotImplemented' (value 1) can't be chosen: it is not implemented",
        thrown([&] { map.enumeration("E")->SetIntValue(1); }));
    EXPECT_EQ(
        "AccessException: node 'E': entry 'NotAvailable' (value 2) can't be chosen: it is not available now",
        thrown([&] { map.enumeration("E")->FromString("NotAvailable"); }));
    EXPECT_EQ("AccessException: node 'E': entry 'Locked' (value 3) can't be chosen: it is locked now",
              thrown([&] { map.enumeration("E")->SetIntValue(3); }));
    map.enumeration("E")->SetIntValue(0);
    EXPECT_EQ(1U, map.port.Writes());
}

} // namespace
