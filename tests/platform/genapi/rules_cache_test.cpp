// When a read goes to the camera, and when not.
#include <gmock/gmock.h>

#include "platform/genapi/RuleMap.h"

namespace {

using namespace rules;

// How many reads the call costs.
template<class Call>
std::uint64_t Reads(RuleMap& rule, Call call) {
    const std::uint64_t before = rule.port.Reads();
    call();
    return rule.port.Reads() - before;
}

TEST(CacheRule, ARegisterIsReadOnce) {
    RuleMap rule(Reg("R", 0) + Node("Integer", "X", "<pValue>R</pValue>"));
    EXPECT_FALSE(rule.Value("X")->IsValueCacheValid());
    EXPECT_EQ(Reads(rule, [&] { rule.Int("X")->GetValue(); }), 1U);
    EXPECT_TRUE(rule.Value("X")->IsValueCacheValid());
    EXPECT_EQ(Reads(rule,
                    [&] {
                        rule.Int("X")->GetValue();
                        rule.Int("R")->GetValue();
                        rule.Value("X")->ToString();
                    }),
              0U);
    rule.Put(0, 5);
    EXPECT_EQ(Reads(rule, [&] { EXPECT_EQ(rule.Int("X")->GetValue(false, true), 5); }), 1U);
    EXPECT_EQ(Reads(rule, [&] { EXPECT_EQ(rule.Int("X")->GetValue(), 5); }), 0U);
}

TEST(CacheRule, NoCacheReadsEachTime) {
    RuleMap rule(Reg("R", 0, "<Cachable>NoCache</Cachable>") + Node("Integer", "X", "<pValue>R</pValue>") +
                 Node("IntSwissKnife", "K", "<pVariable Name=\"V\">X</pVariable><Formula>V + 1</Formula>"));
    EXPECT_EQ(rule.Get("R")->GetCachingMode(), NoCache);
    EXPECT_FALSE(rule.Get("R")->IsCachable());
    for (int i = 0; i < 3; ++i) {
        rule.Put(0, static_cast<std::uint64_t>(i));
        EXPECT_EQ(Reads(rule, [&] { EXPECT_EQ(rule.Int("X")->GetValue(), i); }), 1U);
        EXPECT_EQ(Reads(rule, [&] { EXPECT_EQ(rule.Int("K")->GetValue(), i + 1); }), 1U);
        EXPECT_FALSE(rule.Value("K")->IsValueCacheValid());
    }
}

TEST(CacheRule, WriteThroughKeepsWhatWasWritten) {
    RuleMap rule(Reg("R", 0, "<Cachable>WriteThrough</Cachable>") + Reg("DEFAULT", 4));
    for (const char* name : {"R", "DEFAULT"}) {
        EXPECT_EQ(rule.Get(name)->GetCachingMode(), WriteThrough) << name;
        rule.Int(name)->SetValue(7);
        EXPECT_EQ(Reads(rule, [&] { EXPECT_EQ(rule.Int(name)->GetValue(), 7); }), 0U) << name;
    }
    EXPECT_EQ(rule.port.Writes(), 2U);
}

TEST(CacheRule, WriteAroundReadsAgainAfterAWrite) {
    RuleMap rule(Reg("R", 0, "<Cachable>WriteAround</Cachable>"));
    rule.port.OnWritten([&](std::int64_t, std::int64_t) { rule.Put(0, 16); });
    rule.Int("R")->SetValue(17); // the camera takes another
    EXPECT_EQ(Reads(rule, [&] { EXPECT_EQ(rule.Int("R")->GetValue(), 16); }), 1U);
    EXPECT_EQ(Reads(rule, [&] { EXPECT_EQ(rule.Int("R")->GetValue(), 16); }), 0U);
}

TEST(CacheRule, InvalidatingByHandReadsAgain) {
    RuleMap rule(Reg("R", 0) + Reg("S", 4) + Node("Integer", "X", "<pValue>R</pValue>"));
    rule.Int("X")->GetValue();
    rule.Int("S")->GetValue();
    rule.Put(0, 1);
    rule.Put(4, 2);
    rule.Get("X")->InvalidateNode();
    EXPECT_EQ(rule.Int("X")->GetValue(), 1);
    EXPECT_EQ(Reads(rule, [&] { rule.Int("S")->GetValue(); }), 0U);
    rule.map._InvalidateNodes();
    EXPECT_EQ(Reads(rule, [&] { EXPECT_EQ(rule.Int("S")->GetValue(), 2); }), 1U);
}

TEST(CacheRule, AWriteInvalidatesAllThatIsReckonedFromIt) {
    RuleMap rule(Reg("R", 0) + Node("Integer", "X", "<pValue>R</pValue>") +
                 Node("IntSwissKnife", "K", "<pVariable Name=\"V\">X</pVariable><Formula>V * 2</Formula>") +
                 Node("Integer", "Y", "<Value>5</Value><pMax>K</pMax>") +
                 Node("Converter", "C",
                      "<FormulaTo>FROM</FormulaTo><FormulaFrom>TO / 2</FormulaFrom><pValue>X</pValue>"));
    rule.Int("R")->SetValue(10);
    EXPECT_EQ(rule.Int("K")->GetValue(), 20);
    EXPECT_EQ(rule.Int("Y")->GetMax(), 20);
    EXPECT_DOUBLE_EQ(rule.Float("C")->GetValue(), 5);
    rule.Int("X")->SetValue(30);
    EXPECT_EQ(rule.Int("K")->GetValue(), 60);
    EXPECT_EQ(rule.Int("Y")->GetMax(), 60);
    EXPECT_DOUBLE_EQ(rule.Float("C")->GetValue(), 15);
    rule.Float("C")->SetValue(40);
    EXPECT_EQ(rule.Int("K")->GetValue(), 80);
}

TEST(CacheRule, InvalidatorsReachTheirNodesAndWhatDependsOnThose) {
    RuleMap rule(Reg("R", 0, "<pInvalidator>MODE</pInvalidator>") + Reg("MODE", 4) + Reg("OTHER", 8) +
                 Node("IntSwissKnife", "K", "<pVariable Name=\"V\">R</pVariable><Formula>V + 1</Formula>"));
    rule.Int("R")->GetValue();
    rule.Int("OTHER")->GetValue();
    EXPECT_EQ(rule.Int("K")->GetValue(), 1);
    rule.Put(0, 41);
    rule.Put(8, 1);
    rule.Int("OTHER")->SetValue(3);
    EXPECT_EQ(rule.Int("K")->GetValue(), 1) << "nothing told that it changed";
    rule.Int("MODE")->SetValue(1);
    EXPECT_EQ(rule.Int("R")->GetValue(), 41);
    EXPECT_EQ(rule.Int("K")->GetValue(), 42);
    NodeList_t list;
    rule.Get("R")->GetChildren(list, ctInvalidatingChildren);
    EXPECT_THAT(Names(list), testing::ElementsAre("MODE"));
}

TEST(CacheRule, AnInvalidatorInTheMiddleOfAChainCounts) {
    // The register behind the invalidator is written through another node.
    RuleMap rule(Reg("R", 0, "<pInvalidator>MODE</pInvalidator>") + Reg("M", 4) +
                 Node("Integer", "MODE", "<pValue>M</pValue>") + Node("Integer", "X", "<pValue>R</pValue>"));
    rule.Int("X")->GetValue();
    rule.Put(0, 9);
    rule.Int("M")->SetValue(1);
    EXPECT_EQ(rule.Int("X")->GetValue(), 9);
}

TEST(CacheRule, ACommandInvalidatesWhatNamesIt) {
    RuleMap rule(Reg("R", 0, "<pInvalidator>LOAD</pInvalidator>") + Reg("CREG", 4, "", "WO") +
                 Node("Command", "LOAD", "<pValue>CREG</pValue><CommandValue>1</CommandValue>"));
    EXPECT_EQ(rule.Int("R")->GetValue(), 0);
    rule.port.OnWritten([&](std::int64_t, std::int64_t) { rule.Put(0, 123); });
    rule.Command("LOAD")->Execute();
    EXPECT_EQ(rule.Int("R")->GetValue(), 123);
}

TEST(CacheRule, PolledNodesAreReadAgainWhenTheirTimeHasCome) {
    RuleMap rule(Reg("FAST", 0, "<PollingTime>100</PollingTime>") +
                 Reg("SLOW", 4, "<PollingTime>1000</PollingTime>") + Reg("NEVER", 8) +
                 Node("Integer", "X", "<pValue>FAST</pValue>"));
    EXPECT_EQ(rule.Get("FAST")->GetPollingTime(), 100);
    EXPECT_EQ(rule.Get("NEVER")->GetPollingTime(), -1);
    const auto readAll = [&] {
        rule.Int("X")->GetValue();
        rule.Int("SLOW")->GetValue();
        rule.Int("NEVER")->GetValue();
    };
    EXPECT_EQ(Reads(rule, readAll), 3U);
    rule.map._Poll(60);
    EXPECT_EQ(Reads(rule, readAll), 0U);
    rule.map._Poll(60);
    EXPECT_EQ(Reads(rule, readAll), 1U);
    rule.map._Poll(900);
    EXPECT_EQ(Reads(rule, readAll), 2U);
}

TEST(CacheRule, AnEndlessPollingTimeIsNever) {
    RuleMap rule(Reg("X", 0, "<PollingTime>9223372036854775807</PollingTime>"));
    rule.Int("X")->GetValue();
    rule.map._Poll(1000000);
    EXPECT_EQ(Reads(rule, [&] { rule.Int("X")->GetValue(); }), 0U);
}

TEST(CacheRule, AFailedReadKeepsNothingAndTheNextOneTriesAgain) {
    RuleMap rule(Reg("R", 0) + Node("Integer", "X", "<pValue>R</pValue>"));
    rule.Put(0, 5);
    rule.port.FailReads(1, "cable out");
    try {
        rule.Int("X")->GetValue();
        FAIL() << "read";
    } catch (const GenICam_3_0::GenericException& error) {
        EXPECT_THAT(error.what(), testing::HasSubstr("cable out"));
    }
    EXPECT_FALSE(rule.Value("X")->IsValueCacheValid());
    EXPECT_EQ(rule.Int("X")->GetValue(), 5);
    rule.port.FailReads(1);
    EXPECT_THROW(rule.Int("X")->GetValue(false, true), GenICam_3_0::GenericException);
    EXPECT_EQ(rule.Int("X")->GetValue(false, true), 5);
}

TEST(CacheRule, AfterAFailedWriteTheCameraDecides) {
    RuleMap rule(Reg("R", 0) + Node("Integer", "X", "<pValue>R</pValue>"));
    rule.Put(0, 5);
    EXPECT_EQ(rule.Int("X")->GetValue(), 5);
    rule.port.FailWrites(1);
    EXPECT_THROW(rule.Int("X")->SetValue(6), GenICam_3_0::GenericException);
    EXPECT_EQ(rule.Int("X")->GetValue(), 5);
    rule.Int("X")->SetValue(7);
    EXPECT_EQ(rule.Memory(0), 7U);
    EXPECT_EQ(rule.Int("X")->GetValue(), 7);
}

TEST(CacheRule, OneReadOfARegisterCostsOneAccessAlsoWithLimits) {
    RuleMap rule(Reg("R", 0) + Reg("MAX", 4) + Reg("MIN", 8) +
                 Node("Integer", "X", "<pValue>R</pValue><pMin>MIN</pMin><pMax>MAX</pMax>"));
    rule.Put(4, 100);
    EXPECT_EQ(Reads(rule, [&] { rule.Int("X")->GetValue(); }), 1U);
    EXPECT_EQ(Reads(rule, [&] { rule.Int("X")->GetValue(false, true); }), 1U);
}

TEST(CacheRule, FieldsOfOneAddressShareTheirRegister) {
    // Another node at the same address is written: what was cached of it must not be believed any longer.
    const std::string fields =
        Node("MaskedIntReg", "A", At(0) + "<LSB>31</LSB><MSB>16</MSB><Endianess>BigEndian</Endianess>") +
        Node("MaskedIntReg", "B", At(0) + "<LSB>23</LSB><MSB>8</MSB><Endianess>BigEndian</Endianess>");
    RuleMap rule(fields);
    EXPECT_EQ(rule.Int("A")->GetValue(), 0);
    EXPECT_EQ(rule.Int("B")->GetValue(), 0);
    rule.Int("A")->SetValue(0xFFFF);
    EXPECT_EQ(rule.Int("B")->GetValue(), 0xFF);
}

TEST(CacheRule, SelectorsSwitchWhatIsCached) {
    RuleMap rule(
        Reg("SELREG", 0) +
        Node("Enumeration", "SEL",
             "<EnumEntry Name=\"A\"><Value>0</Value></EnumEntry><EnumEntry "
             "Name=\"B\"><Value>1</Value></EnumEntry>"
             "<pValue>SELREG</pValue><pSelected>X</pSelected>") +
        Node("IntReg", "X",
             At(16) +
                 "<pIndex Offset=\"4\">SEL</pIndex><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess>"));
    rule.Put(16, 100);
    rule.Put(20, 200);
    EXPECT_EQ(rule.Int("X")->GetValue(), 100);
    rule.Enum("SEL")->FromString("B");
    EXPECT_EQ(rule.Int("X")->GetValue(), 200);
    rule.Enum("SEL")->FromString("A");
    EXPECT_EQ(rule.Int("X")->GetValue(), 100);
}

TEST(CallbackRule, RunOnceForEachOperationThatChangesTheNode) {
    RuleMap rule(Reg("R", 0) + Node("Integer", "X", "<pValue>R</pValue>") +
                 Node("Integer", "OTHER", "<Value>1</Value>"));
    int inside = 0;
    int outside = 0;
    const CallbackHandleType first = Register(
        rule.Get("X"), [&](INode*) { ++inside; }, cbPostInsideLock);
    const CallbackHandleType second = Register(
        rule.Get("X"),
        [&](INode* node) {
            ++outside;
            EXPECT_STREQ(node->GetName().c_str(), "X");
            rule.Int("X")->GetValue(); // allowed here
        },
        cbPostOutsideLock);
    rule.Int("X")->GetValue();
    EXPECT_EQ(inside + outside, 0);
    rule.Int("X")->SetValue(5);
    EXPECT_EQ(inside, 1);
    EXPECT_EQ(outside, 1);
    rule.Int("R")->SetValue(6);
    EXPECT_EQ(inside, 2);
    rule.Int("OTHER")->SetValue(7);
    EXPECT_EQ(inside, 2);
    rule.Get("X")->InvalidateNode();
    EXPECT_EQ(outside, 3);
    Deregister(first);
    rule.Int("X")->SetValue(8);
    EXPECT_EQ(inside, 3);
    EXPECT_EQ(outside, 4);
    EXPECT_TRUE(rule.Get("X")->DeregisterCallback(second));
    EXPECT_FALSE(rule.Get("X")->DeregisterCallback(second));
}

} // namespace
