// What is read from the camera, what from a cache, and what a change makes old. Counted at the port.
#include <thread>

#include "platform/genapi/NodeMapFixture.h"

namespace {

using namespace genapi_test;

std::string cachable(const char* mode) {
    return std::string("<Cachable>") + mode + "</Cachable>";
}

struct CacheRow {
    const char* mode;
    std::uint64_t secondRead;     // port reads of a second read
    std::uint64_t readAfterWrite; // port reads of a read after a write
    ECachingMode caching;
};

class CachingMode : public testing::TestWithParam<CacheRow> {};

TEST_P(CachingMode, DecidesWhatGoesToThePort) {
    Map map(intReg("Reg", "0x100", cachable(GetParam().mode)) +
            "<Integer Name=\"X\"><pValue>Reg</pValue></Integer>");
    const CIntegerPtr x = map.integer("X");
    EXPECT_FALSE(x->IsValueCacheValid());
    EXPECT_EQ(0, x->GetValue());
    EXPECT_EQ(1U, map.port.Reads());
    map.port.Forget();
    x->GetValue();
    EXPECT_EQ(GetParam().secondRead, map.port.Reads());
    EXPECT_EQ(GetParam().secondRead == 0, x->IsValueCacheValid());
    map.port.Forget();
    x->SetValue(5);
    EXPECT_EQ(1U, map.port.Writes());
    EXPECT_EQ(0U, map.port.Reads());
    map.port.StoreInteger(0x100, 4, 4); // the camera made something else of it
    EXPECT_EQ(GetParam().readAfterWrite == 0 ? 5 : 4, x->GetValue());
    EXPECT_EQ(GetParam().readAfterWrite, map.port.Reads());
    EXPECT_EQ(GetParam().caching, map.node("X")->GetCachingMode());
    EXPECT_EQ(GetParam().caching != NoCache, map.node("X")->IsCachable());
}

INSTANTIATE_TEST_SUITE_P(Each, CachingMode,
                         testing::Values(CacheRow{"NoCache", 1, 1, NoCache},
                                         CacheRow{"WriteThrough", 0, 0, WriteThrough},
                                         CacheRow{"WriteAround", 0, 1, WriteAround}));

TEST(Cache, WriteThroughIsTheDefault) {
    Map map(intReg("Reg", "0x100"));
    EXPECT_EQ(WriteThrough, map.node("Reg")->GetCachingMode());
}

TEST(Cache, IsPassedOverOnDemandAndNewsSpread) {
    Map map(intReg("Reg", "0x100") + "<Integer Name=\"X\"><pValue>Reg</pValue></Integer>"
                                     "<IntSwissKnife Name=\"Twice\"><pVariable Name=\"V\">X</pVariable>"
                                     "<Formula>V * 2</Formula></IntSwissKnife>");
    EXPECT_EQ(0, map.integer("Twice")->GetValue());
    map.port.StoreInteger(0x100, 4, 21);
    EXPECT_EQ(0, map.integer("Twice")->GetValue());
    EXPECT_EQ(21, map.integer("X")->GetValue(false, true));
    EXPECT_EQ(42, map.integer("Twice")->GetValue());
    map.port.StoreInteger(0x100, 4, 4);
    EXPECT_EQ(8, map.integer("Twice")->GetValue(false, true));
    EXPECT_EQ(4, map.integer("X")->GetValue());
}

TEST(Cache, EachUncachedReadIsOneAccess) {
    Map map(intReg("Reg", "0x100", cachable("NoCache")) +
            "<Converter Name=\"C\"><FormulaTo>FROM</FormulaTo><FormulaFrom>TO * 0.5</FormulaFrom>"
            "<pValue>Reg</pValue></Converter><Float "
            "Name=\"F\"><Min>0</Min><Max>100</Max><pValue>C</pValue></Float>");
    for (std::uint64_t i = 1; i <= 3; ++i) {
        map.floating("F")->GetValue();
        EXPECT_EQ(i, map.port.Reads());
    }
}

TEST(Cache, AComputedValueIsOnlyKeptWhenAllBelowItIs) {
    Map map(intReg("Kept", "0x100") + intReg("Live", "0x104", cachable("NoCache")) +
            "<IntSwissKnife Name=\"Sum\"><pVariable Name=\"A\">Kept</pVariable><pVariable "
            "Name=\"B\">Live</pVariable>"
            "<Formula>A + B</Formula></IntSwissKnife>");
    EXPECT_EQ(0, map.integer("Sum")->GetValue());
    map.port.StoreInteger(0x104, 4, 3);
    EXPECT_EQ(3, map.integer("Sum")->GetValue());
    EXPECT_EQ(NoCache, map.node("Sum")->GetCachingMode());
}

TEST(CacheInvalidation, ADeclaredInvalidatorMakesARegisterOld) {
    Map map(intReg("Source", "0x100") + intReg("Target", "0x104", "<pInvalidator>Source</pInvalidator>") +
            "<Integer Name=\"X\"><pValue>Target</pValue></Integer>");
    map.integer("X")->GetValue();
    map.port.StoreInteger(0x104, 4, 9);
    EXPECT_EQ(0, map.integer("X")->GetValue());
    map.integer("Source")->SetValue(1);
    EXPECT_EQ(9, map.integer("X")->GetValue());
}

TEST(CacheInvalidation, NamingAFeatureCoversWhatIsWrittenBelowIt) {
    // The invalidator is a feature, the write goes to another feature in front of the same register.
    Map map(intReg("Reg", "0x100") +
            "<Integer Name=\"A\"><pValue>Reg</pValue></Integer><Integer "
            "Name=\"B\"><pValue>Reg</pValue></Integer>" +
            intReg("Target", "0x104", "<pInvalidator>A</pInvalidator>"));
    map.integer("Target")->GetValue();
    map.port.StoreInteger(0x104, 4, 9);
    map.integer("B")->SetValue(1);
    EXPECT_EQ(9, map.integer("Target")->GetValue());
}

TEST(CacheInvalidation, OnAFeatureReachesTheRegisterBelowIt) {
    Map map(intReg("Source", "0x100") + intReg("Reg", "0x104") +
            "<Integer Name=\"X\"><pInvalidator>Source</pInvalidator><pValue>Reg</pValue></Integer>");
    map.integer("X")->GetValue();
    map.port.StoreInteger(0x104, 4, 9);
    map.integer("Source")->SetValue(1);
    EXPECT_EQ(9, map.integer("X")->GetValue());
}

TEST(CacheInvalidation, ACommandMakesOthersOld) {
    Map map(intReg("Go", "0x100", "", 4, "WO") +
            "<Command Name=\"Load\"><pValue>Go</pValue><CommandValue>1</CommandValue></Command>" +
            intReg("Target", "0x104", "<pInvalidator>Load</pInvalidator>"));
    map.integer("Target")->GetValue();
    map.port.StoreInteger(0x104, 4, 9);
    map.command("Load")->Execute();
    EXPECT_EQ(9, map.integer("Target")->GetValue());
}

TEST(CacheInvalidation, ALoopOfInvalidatorsEnds) {
    Map map(intReg("A", "0x100", "<pInvalidator>B</pInvalidator>") +
            intReg("B", "0x104", "<pInvalidator>A</pInvalidator>"));
    map.integer("A")->SetValue(1);
    map.integer("B")->SetValue(2);
    map.port.Forget();
    EXPECT_EQ(1, map.integer("A")->GetValue());
    EXPECT_EQ(1U, map.port.Reads());
}

TEST(CacheInvalidation, ARegisterThatItsOwnChangeMakesOldIsReadAgain) {
    Map map(intReg("Reg", "0x100", "<pInvalidator>X</pInvalidator>") +
            "<Integer Name=\"X\"><pValue>Reg</pValue></Integer>");
    map.integer("X")->SetValue(100);
    map.port.StoreInteger(0x100, 4, 96); // rounded by the camera
    EXPECT_EQ(96, map.integer("X")->GetValue());
}

TEST(CacheInvalidation, AnUnknownInvalidatorIsNobodysFault) {
    Map map(intReg("Reg", "0x100", "<pInvalidator>Nowhere</pInvalidator>"));
    EXPECT_EQ(0, map.integer("Reg")->GetValue());
}

TEST(CacheInvalidation, ByHandReachesTheRegisterAndAllAboveIt) {
    Map map(intReg("Reg", "0x100") + "<Integer Name=\"X\"><pValue>Reg</pValue></Integer>"
                                     "<IntSwissKnife Name=\"K\"><pVariable Name=\"V\">Reg</pVariable>"
                                     "<Formula>V</Formula></IntSwissKnife>");
    map.integer("X")->GetValue();
    map.integer("K")->GetValue();
    map.port.StoreInteger(0x100, 4, 5);
    map.node("X")->InvalidateNode();
    EXPECT_EQ(5, map.integer("K")->GetValue());
    map.port.StoreInteger(0x100, 4, 6);
    map.node("K")->InvalidateNode();
    EXPECT_EQ(6, map.integer("X")->GetValue());
    map.port.StoreInteger(0x100, 4, 7);
    map.ref()._InvalidateNodes();
    EXPECT_EQ(7, map.integer("X")->GetValue());
}

TEST(CacheSelectors, ASelectorMakesWhatItSelectsOld) {
    // The camera switches behind one address; the XML says so by pSelected alone.
    Map map(intReg("SelectorReg", "0x100") +
            "<Integer Name=\"Selector\"><pValue>SelectorReg</pValue><pSelected>Gain</pSelected></Integer>" +
            intReg("GainReg", "0x104") + "<Integer Name=\"Gain\"><pValue>GainReg</pValue></Integer>");
    map.port.OnWritten([&](std::int64_t address, std::int64_t) {
        if (address == 0x100)
            map.port.StoreInteger(0x104, 4, 10 * map.port.LoadInteger(0x100, 4));
    });
    EXPECT_EQ(0, map.integer("Gain")->GetValue());
    map.integer("Selector")->SetValue(3);
    EXPECT_EQ(30, map.integer("Gain")->GetValue());
    EXPECT_TRUE(map.selector("Selector")->IsSelector());
    EXPECT_FALSE(map.selector("Gain")->IsSelector());
    FeatureList_t features;
    map.selector("Selector")->GetSelectedFeatures(features);
    ASSERT_EQ(1U, features.size());
    EXPECT_STREQ("Gain", features[0]->GetNode()->GetName().c_str());
    map.selector("Gain")->GetSelectingFeatures(features);
    ASSERT_EQ(1U, features.size());
    EXPECT_STREQ("Selector", features[0]->GetNode()->GetName().c_str());
}

TEST(CacheSelectors, AnIndexedRegisterFollowsItsIndex) {
    Map map(intReg("Index", "0x100") +
            "<IntReg Name=\"Entry\"><Address>0x200</Address>"
            "<pIndex Offset=\"4\">Index</pIndex><Length>4</Length><AccessMode>RW</AccessMode>"
            "<pPort>Device</pPort><Endianess>BigEndian</Endianess></IntReg>");
    for (int i = 0; i < 4; ++i) {
        map.integer("Index")->SetValue(i);
        map.integer("Entry")->SetValue(100 + i);
    }
    for (int i = 3; i >= 0; --i) {
        map.integer("Index")->SetValue(i);
        EXPECT_EQ(0x200 + 4 * i, map.reg("Entry")->GetAddress());
        EXPECT_EQ(100 + i, map.integer("Entry")->GetValue());
        EXPECT_EQ(100U + static_cast<unsigned>(i), map.port.LoadInteger(0x200 + 4 * i, 4));
    }
}

TEST(CachePolling, ReadsAgainWhenTheTimeHasPassed) {
    Map map(intReg("Slow", "0x100", "<PollingTime>100000</PollingTime>") +
            intReg("Slower", "0x104", "<PollingTime>300000</PollingTime>") + intReg("Never", "0x108"));
    EXPECT_EQ(100000, map.node("Slow")->GetPollingTime());
    EXPECT_EQ(-1, map.node("Never")->GetPollingTime());
    const auto readAll = [&map] {
        map.port.Forget();
        for (const char* name : {"Slow", "Slower", "Never"})
            map.integer(name)->GetValue();
        return map.port.Reads();
    };
    EXPECT_EQ(3U, readAll());
    EXPECT_EQ(0U, readAll());
    map.ref()._Poll(99999);
    EXPECT_EQ(0U, readAll());
    map.ref()._Poll(1);
    EXPECT_EQ(1U, readAll()); // Slow
    map.ref()._Poll(0);
    EXPECT_EQ(0U, readAll());
    map.ref()._Poll(199999);
    EXPECT_EQ(1U, readAll()); // Slow again
    map.ref()._Poll(1);
    EXPECT_EQ(1U, readAll()); // Slower
    EXPECT_THROW(map.ref()._Poll(-1), InvalidArgumentException);
}

TEST(CachePolling, ANodeInFrontIsPolledWithTheRegisterBelow) {
    Map map(intReg("Reg", "0x100") +
            "<Enumeration Name=\"E\"><EnumEntry Name=\"A\"><Value>0</Value></EnumEntry>"
            "<EnumEntry "
            "Name=\"B\"><Value>1</Value></EnumEntry><PollingTime>50000</PollingTime><pValue>Reg</pValue>"
            "</Enumeration>");
    EXPECT_STREQ("A", map.enumeration("E")->ToString().c_str());
    map.port.StoreInteger(0x100, 4, 1);
    EXPECT_STREQ("A", map.enumeration("E")->ToString().c_str());
    map.ref()._Poll(50000);
    EXPECT_STREQ("B", map.enumeration("E")->ToString().c_str());
}

TEST(CachePolling, IsBlockedByItsNode) {
    Map map(intReg("Block", "0x100") +
            intReg("Reg", "0x104", "<pBlockPolling>Block</pBlockPolling><PollingTime>50000</PollingTime>"));
    map.integer("Reg")->GetValue();
    map.integer("Block")->SetValue(1);
    map.integer("Reg")->GetValue();
    map.port.StoreInteger(0x104, 4, 1);
    map.ref()._Poll(50000);
    EXPECT_EQ(0, map.integer("Reg")->GetValue());
    map.integer("Block")->SetValue(0);
    map.integer("Reg")->GetValue();
    map.port.StoreInteger(0x104, 4, 2);
    map.ref()._Poll(50000);
    EXPECT_EQ(2, map.integer("Reg")->GetValue());
}

// Also where nobody polls, a value is not served long after it has grown old.
TEST(CachePolling, AnOldValueIsReadAgainWithoutAPoll) {
    Map map(intReg("Reg", "0x100", "<PollingTime>20</PollingTime>") +
            "<IntSwissKnife Name=\"K\"><pVariable Name=\"V\">Reg</pVariable><Formula>V + "
            "1</Formula></IntSwissKnife>");
    EXPECT_EQ(1, map.integer("K")->GetValue());
    map.port.StoreInteger(0x100, 4, 7);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (map.integer("K")->GetValue() != 8 && std::chrono::steady_clock::now() < deadline)
        std::this_thread::yield();
    EXPECT_EQ(8, map.integer("K")->GetValue());
}

TEST(CacheFailures, AFailedReadLeavesTheNodeUsable) {
    Map map(intReg("Reg", "0x100"));
    map.port.FailReads(1, "no answer");
    const std::string failure =
        "RuntimeException: node 'Reg' can't be read: reading 4 bytes at address 0x100: no answer";
    EXPECT_EQ(failure, thrown([&] { map.integer("Reg")->GetValue(); }));
    map.port.StoreInteger(0x100, 4, 3);
    EXPECT_EQ(3, map.integer("Reg")->GetValue());
    map.port.FailReads(1, "no answer");
    EXPECT_EQ(failure, thrown([&] { map.integer("Reg")->GetValue(false, true); }));
    EXPECT_EQ(3, map.integer("Reg")->GetValue());
}

TEST(CacheFailures, AFailedWriteIsFollowedByAFreshRead) {
    Map map(intReg("Reg", "0x100") + "<Integer Name=\"X\"><pValue>Reg</pValue></Integer>");
    EXPECT_EQ(0, map.integer("X")->GetValue());
    map.port.FailWrites(1, "refused");
    EXPECT_EQ("RuntimeException: node 'X' can't be set to 5: node 'Reg', writing 4 bytes at address 0x100: "
              "refused",
              thrown([&] { map.integer("X")->SetValue(5); }));
    map.port.Forget();
    EXPECT_EQ(0, map.integer("X")->GetValue());
    EXPECT_EQ(1U, map.port.Reads());
    map.integer("X")->SetValue(6);
    EXPECT_EQ(6, map.integer("X")->GetValue());
}

TEST(CacheFailures, APortMayThrowAnything) {
    Map map(intReg("Reg", "0x100"));
    map.port.OnAccess([](bool, std::int64_t, std::int64_t) { throw 0x80000006; });
    EXPECT_THROW(map.integer("Reg")->GetValue(), unsigned);
    EXPECT_THROW(map.integer("Reg")->SetValue(1), unsigned);
    map.port.OnAccess(nullptr);
    EXPECT_EQ(0, map.integer("Reg")->GetValue());
}

TEST(CachePort, AnotherPortIsAnotherCamera) {
    Map map(intReg("Reg", "0x100"));
    EXPECT_EQ(0, map.integer("Reg")->GetValue());
    support::MemoryPort other;
    other.StoreInteger(0x100, 4, 8);
    map.ref()._Connect(&other);
    EXPECT_EQ(8, map.integer("Reg")->GetValue());
    map.ref()._Connect(&map.port);
    EXPECT_EQ(0, map.integer("Reg")->GetValue());
}

TEST(CachePort, AWriteToThePortItselfIsSeen) {
    Map map(intReg("Reg", "0x100"));
    EXPECT_EQ(0, map.integer("Reg")->GetValue());
    const CPortPtr port(map.node("Device"));
    const std::uint8_t bytes[] = {1, 2};
    port->Write(bytes, 0x102, 2);
    EXPECT_EQ(0x0102, map.integer("Reg")->GetValue());
    std::uint8_t read[4] = {};
    port->Read(read, 0x100, 4);
    EXPECT_EQ(2, read[3]);
    EXPECT_THROW(port->Read(nullptr, 0, 4), InvalidArgumentException);
    EXPECT_THROW(port->Write(bytes, INT64_MAX, 2), InvalidArgumentException);
    EXPECT_THROW(port->Write(bytes, 0, -1), InvalidArgumentException);
}

TEST(CacheConstants, AWriteToANumberInTheXmlIsSeenByAllThatUseIt) {
    Map map("<Integer Name=\"TLParamsLocked\"><Value>0</Value><Min>0</Min><Max>1</Max></Integer>" +
            intReg("Reg", "0x100") +
            "<Integer Name=\"Width\"><pIsLocked>TLParamsLocked</pIsLocked><pValue>Reg</pValue></Integer>");
    EXPECT_EQ(RW, map.mode("Width"));
    map.integer("TLParamsLocked")->SetValue(1);
    EXPECT_EQ(RO, map.mode("Width"));
    EXPECT_THROW(map.integer("TLParamsLocked")->SetValue(2), OutOfRangeException);
    map.integer("TLParamsLocked")->SetValue(0);
    EXPECT_EQ(RW, map.mode("Width"));
    EXPECT_EQ(0U, map.port.Writes());
}

} // namespace
