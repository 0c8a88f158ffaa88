// Features that streaming needs, out of descriptions that are wrong in each way, and the statuses of that.
#include <functional>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Base/GCException.h"
#include "Camera/Boundary/OvStatus.h"
#include "ScriptedDevice.h"
#include "device/FeatureMap.h"

namespace kolt::cc {
namespace {

std::vector<std::uint8_t> description(const std::string& nodes) {
    const std::string xml =
        "<?xml version=\"1.0\" encoding=\"utf-8\"?><RegisterDescription ModelName=\"m\" VendorName=\"v\" "
        "ToolTip=\"t\" StandardNameSpace=\"None\" SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\" "
        "SchemaSubMinorVersion=\"0\" MajorVersion=\"1\" MinorVersion=\"0\" SubMinorVersion=\"0\" "
        "ProductGuid=\"1\" VersionGuid=\"2\" xmlns=\"http://www.genicam.org/GenApi/Version_1_1\">" +
        nodes + "<Port Name=\"Device\"/></RegisterDescription>";
    return {xml.begin(), xml.end()};
}

TEST(StatusOfException, OnePerClass) {
    const std::vector<std::pair<std::function<void()>, std::uint32_t>> rows{
        {[] { throw GENERIC_EXCEPTION("x"); }, OV_STATUS_GENICAM_GENERIC},
        {[] { throw INVALID_ARGUMENT_EXCEPTION("x"); }, OV_STATUS_GENICAM_ARGUMENT},
        {[] { throw OUT_OF_RANGE_EXCEPTION("x"); }, OV_STATUS_GENICAM_RANGE},
        {[] { throw PROPERTY_EXCEPTION("x"); }, OV_STATUS_GENICAM_PROPERTY},
        {[] { throw RUNTIME_EXCEPTION("x"); }, OV_STATUS_GENICAM_RUNTIME},
        {[] { throw LOGICAL_ERROR_EXCEPTION("x"); }, OV_STATUS_GENICAM_LOGICAL},
        {[] { throw ACCESS_EXCEPTION("x"); }, OV_STATUS_GENICAM_ACCESS},
        {[] { throw TIMEOUT_EXCEPTION("x"); }, OV_STATUS_GENICAM_TIMEOUT},
        {[] { throw DYNAMICCAST_EXCEPTION("x"); }, OV_STATUS_GENICAM_DYNAMIC_CAST},
        {[] { throw BAD_ALLOC_EXCEPTION("x"); }, OV_STATUS_RESOURCE},
        {[] { throw std::bad_alloc(); }, OV_STATUS_RESOURCE},
        {[] { throw std::runtime_error("x"); }, OV_STATUS_GENICAM_GENERIC},
    };
    for (std::size_t row = 0; row < rows.size(); ++row) {
        try {
            rows[row].first();
            ADD_FAILURE() << row;
        } catch (const std::exception& exception) {
            EXPECT_EQ(statusOfException(exception), rows[row].second) << row;
        }
    }
}

struct Case {
    const char* name;
    const char* nodes;
    const char* feature;
    std::uint32_t reading;
    std::uint32_t execution;
};

// Printed where a test fails.
void PrintTo(const Case& row, std::ostream* out) {
    *out << row.name;
}

class FeatureMapOf : public testing::TestWithParam<Case> {};

TEST_P(FeatureMapOf, GivesTheValueOrAStatus) {
    const auto script = std::make_shared<Script>();
    ScriptedDevice device(script);
    const std::vector<std::uint8_t> xml = description(GetParam().nodes);
    FeatureMap map(device, xml);
    std::int64_t value = -1;
    for (int round = 0; round < 2; ++round) { // a failure is no different the second time
        EXPECT_EQ(map.integer(GetParam().feature, value), GetParam().reading);
        EXPECT_EQ(map.execute(GetParam().feature), GetParam().execution);
    }
}

constexpr Case kCases[] = {
    {"Number", "<Integer Name='F'><Value>5</Value></Integer>", "F", OV_STATUS_OK, OV_STATUS_NOT_SUPPORTED},
    {"Choice",
     "<Enumeration Name='F'><EnumEntry Name='A'><Value>7</Value></EnumEntry><Value>7</Value></Enumeration>",
     "F", OV_STATUS_OK, OV_STATUS_NOT_SUPPORTED},
    {"Command",
     "<Command Name='F'><pValue>R</pValue><CommandValue>1</CommandValue></Command>"
     "<IntReg Name='R'><Address>0x100</Address><Length>4</Length><AccessMode>RW</AccessMode>"
     "<pPort>Device</pPort><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess></IntReg>",
     "F", OV_STATUS_NOT_SUPPORTED, OV_STATUS_OK},
    {"Missing", "", "F", OV_STATUS_NOT_SUPPORTED, OV_STATUS_NOT_SUPPORTED},
    {"OtherKind",
     "<StringReg Name='F'><Address>0</Address><Length>4</Length><pPort>Device</pPort></StringReg>", "F",
     OV_STATUS_NOT_SUPPORTED, OV_STATUS_NOT_SUPPORTED},
    {"NotAvailable",
     "<Integer Name='F'><pIsAvailable>No</pIsAvailable><Value>5</Value></Integer>"
     "<Integer Name='No'><Value>0</Value></Integer>",
     "F", OV_STATUS_GENICAM_ACCESS, OV_STATUS_NOT_SUPPORTED},
    {"LockedCommand",
     "<Command Name='F'><pIsLocked>Yes</pIsLocked><pValue>V</pValue><CommandValue>1</CommandValue></Command>"
     "<Integer Name='Yes'><Value>1</Value></Integer><Integer Name='V'><Value>0</Value></Integer>",
     "F", OV_STATUS_NOT_SUPPORTED, OV_STATUS_GENICAM_ACCESS},
    {"CommandOutOfRange",
     "<Command Name='F'><pValue>V</pValue><CommandValue>99</CommandValue></Command>"
     "<Integer Name='V'><Value>0</Value><Min>0</Min><Max>10</Max></Integer>",
     "F", OV_STATUS_NOT_SUPPORTED, OV_STATUS_GENICAM_RANGE},
    {"UnknownReference", "<Integer Name='F'><pValue>Nowhere</pValue></Integer>", "F",
     OV_STATUS_GENICAM_PROPERTY, OV_STATUS_NOT_SUPPORTED},
    {"Circle", "<Integer Name='F'><pValue>G</pValue></Integer><Integer Name='G'><pValue>F</pValue></Integer>",
     "F", OV_STATUS_GENICAM_RUNTIME, OV_STATUS_NOT_SUPPORTED},
};

INSTANTIATE_TEST_SUITE_P(Descriptions, FeatureMapOf, testing::ValuesIn(kCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(FeatureMap, TheDevicesOwnWordComesFirst) {
    const auto script = std::make_shared<Script>();
    ScriptedDevice device(script);
    const std::vector<std::uint8_t> xml =
        description("<IntReg Name='F'><Address>0x100</Address><Length>4</Length><AccessMode>RW</AccessMode>"
                    "<pPort>Device</pPort><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess></IntReg>");
    FeatureMap map(device, xml);
    std::int64_t value = -1;
    EXPECT_EQ(map.integer("F", value), OV_STATUS_OK);
    EXPECT_EQ(value, 0) << "the scripted device has the low byte of the address everywhere";
    for (const std::uint32_t status :
         {OV_STATUS_NETWORK, OV_STATUS_ACCESS_DENIED, OV_STATUS_WRITE_PROTECTED, OV_STATUS_BUSY}) {
        script->readStatus = status;
        EXPECT_EQ(map.integer("F", value), status);
    }
    script->readStatus = OV_STATUS_OK;
    EXPECT_EQ(map.integer("F", value), OV_STATUS_OK) << "nothing of the failures is kept";
}

TEST(FeatureMap, ADescriptionThatCannotBeLoadedIsAStatusEachTime) {
    const auto script = std::make_shared<Script>();
    ScriptedDevice device(script);
    const std::string text = "<a><b></a>";
    const std::vector<std::uint8_t> xml(text.begin(), text.end());
    FeatureMap map(device, xml);
    std::int64_t value = -1;
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(map.integer("F", value), OV_STATUS_GENICAM_RUNTIME);
        EXPECT_EQ(map.execute("F"), OV_STATUS_GENICAM_RUNTIME);
    }
    EXPECT_FALSE(isWellFormed(xml));
    EXPECT_TRUE(isWellFormed(description("")));
}

} // namespace
} // namespace kolt::cc
