// Which features each model has, what kind they are, and how they are described.
#include <set>

#include "FeatureWalk.h"

namespace {

using namespace kolt::test;
using namespace GenApi_3_0;
using vcam::Model;

// Presence by model, in the order colour, mono, line scan, small: '+' there, '-' in the XML and not
// implemented, ' ' not in the XML.
struct Row {
    const char* name;
    char kind; // Integer, Float, Boolean, Enumeration ('e'), Command, String, Register
    const char* models;
    EVisibility visibility;
};

constexpr Row kTable[] = {
    {"DeviceVendorName", 'S', "++++", Beginner},
    {"DeviceModelName", 'S', "++++", Beginner},
    {"DeviceManufacturerInfo", 'S', "++++", Beginner},
    {"DeviceVersion", 'S', "++++", Beginner},
    {"DeviceFirmwareVersion", 'S', "++++", Beginner},
    {"DeviceSerialNumber", 'S', "++++", Beginner},
    {"DeviceUserID", 'S', "++++", Beginner},
    {"DeviceScanType", 'e', "++++", Expert},
    {"DeviceLinkSpeed", 'I', "++++", Expert},
    {"DeviceReset", 'C', "++++", Guru},
    {"DeviceTemperatureSelector", 'e', "+++ ", Expert},
    {"DeviceTemperature", 'F', "+++ ", Expert},
    {"SensorWidth", 'I', "++++", Expert},
    {"SensorHeight", 'I', "++++", Expert},
    {"WidthMax", 'I', "++++", Expert},
    {"HeightMax", 'I', "++++", Expert},
    {"RegionSelector", 'e', "+++ ", Expert},
    {"RegionMode", 'e', "+++ ", Expert},
    {"Width", 'I', "++++", Beginner},
    {"Height", 'I', "++++", Beginner},
    {"OffsetX", 'I', "++++", Beginner},
    {"OffsetY", 'I', "++-+", Beginner},
    {"PixelFormat", 'e', "++++", Beginner},
    {"PixelSize", 'e', "++++", Expert},
    {"ReverseX", 'B', "+++ ", Beginner},
    {"ReverseY", 'B', "++- ", Beginner},
    {"TestPattern", 'e', "+++ ", Beginner},
    {"BinningSelector", 'e', "+++ ", Expert},
    {"BinningHorizontal", 'I', "+++ ", Expert},
    {"BinningVertical", 'I', "++- ", Expert},
    {"ImageCompressionMode", 'e', "+++ ", Beginner},
    {"AcquisitionMode", 'e', "++++", Beginner},
    {"AcquisitionStart", 'C', "++++", Beginner},
    {"AcquisitionStop", 'C', "++++", Beginner},
    {"AcquisitionAbort", 'C', "++++", Expert},
    {"AcquisitionFrameCount", 'I', "++++", Beginner},
    {"AcquisitionFrameRate", 'F', "++-+", Beginner},
    {"AcquisitionFrameRateEnable", 'B', "++-+", Beginner},
    {"ResultingFrameRate", 'F', "++++", Beginner},
    {"AcquisitionLineRate", 'F', "--+ ", Beginner},
    {"AcquisitionLineRateEnable", 'B', "--+ ", Beginner},
    {"ResultingLineRate", 'I', "--+ ", Beginner},
    {"ExposureMode", 'e', "++++", Beginner},
    {"ExposureTime", 'F', "++++", Beginner},
    {"ExposureAuto", 'e', "++++", Beginner},
    {"Gain", 'F', "++++", Beginner},
    {"GainAuto", 'e', "++++", Beginner},
    {"GammaEnable", 'B', "+++ ", Expert},
    {"GammaSelector", 'e', "+++ ", Expert},
    {"Gamma", 'F', "+++ ", Beginner},
    {"Brightness", 'I', "+++ ", Beginner},
    {"SharpnessEnable", 'B', "+++ ", Expert},
    {"Sharpness", 'I', "+++ ", Beginner},
    {"HueEnable", 'B', "+-- ", Expert},
    {"Hue", 'I', "+-- ", Beginner},
    {"SaturationEnable", 'B', "+-- ", Expert},
    {"Saturation", 'I', "+-- ", Beginner},
    {"BalanceRatioSelector", 'e', "+-- ", Beginner},
    {"BalanceRatio", 'I', "+-- ", Beginner},
    {"BalanceWhiteAuto", 'e', "+-- ", Beginner},
    {"AutoFunctionAOISelector", 'e', "+++ ", Expert},
    {"AutoFunctionAOIWidth", 'I', "+++ ", Expert},
    {"AutoFunctionAOIHeight", 'I', "+++ ", Expert},
    {"AutoFunctionAOIOffsetX", 'I', "+++ ", Expert},
    {"AutoFunctionAOIOffsetY", 'I', "+++ ", Expert},
    {"AutoFunctionAOIUsageIntensity", 'B', "+++ ", Expert},
    {"AutoFunctionAOIUsageWhiteBalance", 'B', "+-- ", Expert},
    {"TriggerSelector", 'e', "+++ ", Beginner},
    {"TriggerMode", 'e', "+++ ", Beginner},
    {"TriggerSource", 'e', "+++ ", Beginner},
    {"TriggerActivation", 'e', "+++ ", Beginner},
    {"TriggerDelay", 'F', "+++ ", Beginner},
    {"TriggerSoftware", 'C', "+++ ", Beginner},
    {"LineSelector", 'e', "+++ ", Beginner},
    {"LineMode", 'e', "+++ ", Expert},
    {"LineInverter", 'B', "+++ ", Expert},
    {"LineSource", 'e', "+++ ", Expert},
    {"LineStatus", 'B', "+++ ", Expert},
    {"LineStatusAll", 'I', "+++ ", Expert},
    {"UserOutputSelector", 'e', "+++ ", Expert},
    {"UserOutputValue", 'B', "+++ ", Expert},
    {"HDREnable", 'B', "+++ ", Expert},
    {"HDRSelector", 'I', "+++ ", Expert},
    {"HDRGain", 'F', "+++ ", Expert},
    {"HDRShutter", 'I', "+++ ", Expert},
    {"LUTSelector", 'e', "+++ ", Expert},
    {"LUTEnable", 'B', "+++ ", Expert},
    {"LUTIndex", 'I', "+++ ", Guru},
    {"LUTValue", 'I', "+++ ", Guru},
    {"LUTValueAll", 'R', "+++ ", Guru},
    {"FrameSpecInfoSelector", 'e', "+++ ", Expert},
    {"FrameSpecInfo", 'B', "+++ ", Expert},
    {"FrameSpecInfo_Reg", 'I', "+++ ", Guru},
    {"FileSelector", 'e', "+++ ", Guru},
    {"FileOperationSelector", 'e', "+++ ", Guru},
    {"FileOperationExecute", 'C', "+++ ", Guru},
    {"FileOpenMode", 'e', "+++ ", Guru},
    {"FileAccessBuffer", 'R', "+++ ", Guru},
    {"FileAccessOffset", 'I', "+++ ", Guru},
    {"FileAccessLength", 'I', "+++ ", Guru},
    {"FileOperationStatus", 'e', "+++ ", Guru},
    {"FileOperationResult", 'I', "+++ ", Guru},
    {"FileSize", 'I', "+++ ", Guru},
    {"UserSetSelector", 'e', "+++ ", Expert},
    {"UserSetLoad", 'C', "+++ ", Expert},
    {"UserSetSave", 'C', "+++ ", Expert},
    {"UserSetDefault", 'e', "+++ ", Expert},
    {"ChunkModeActive", 'B', "+++ ", Expert},
    {"ChunkSelector", 'e', "+++ ", Expert},
    {"ChunkEnable", 'B', "+++ ", Expert},
    {"PayloadSize", 'I', "++++", Expert},
    {"TLParamsLocked", 'I', "++++", Invisible},
    {"GevSCPSPacketSize", 'I', "++++", Expert},
    {"DeviceStreamChannelPacketSize", 'I', "++++", Expert},
    {"GevSCPSFireTestPacket", 'C', "++++", Guru},
    {"GevSCPD", 'I', "++++", Expert},
    {"GevSCDA", 'I', "++++", Expert},
    {"GevSCPHostPort", 'I', "++++", Guru},
    {"GevSCSP", 'I', "++++", Expert},
    {"GevHeartbeatTimeout", 'I', "++++", Guru},
    {"GevMACAddress", 'I', "++++", Expert},
    {"GevMACAddrHigh_Reg", 'I', "++++", Guru},
    {"GevMACAddrLow_Reg", 'I', "++++", Guru},
    {"GevCurrentIPConfigurationLLA", 'B', "++++", Expert},
    {"GevCurrentIPConfigurationDHCP", 'B', "++++", Expert},
    {"GevCurrentIPConfigurationPersistentIP", 'B', "++++", Expert},
    {"GevCurrentIPAddress", 'I', "++++", Expert},
    {"GevCurrentSubnetMask", 'I', "++++", Expert},
    {"GevCurrentDefaultGateway", 'I', "++++", Expert},
    {"GevPersistentIPAddress", 'I', "++++", Expert},
    {"GevPersistentSubnetMask", 'I', "++++", Expert},
    {"GevPersistentDefaultGateway", 'I', "++++", Expert},
    {"GevLinkSpeed", 'I', "++++", Expert},
    {"VcamLossPerMille", 'I', "++++", Guru},
    {"VcamPacketsMissing", 'I', "++++", Guru},
    {"VcamLineLevels", 'I', "+++ ", Guru},
    {"VcamPulseLine", 'I', "+++ ", Guru},
};

char KindOf(INode& node) {
    switch (node.GetPrincipalInterfaceType()) {
    case intfIInteger:
        return 'I';
    case intfIFloat:
        return 'F';
    case intfIBoolean:
        return 'B';
    case intfIEnumeration:
        return 'e';
    case intfICommand:
        return 'C';
    case intfIString:
        return 'S';
    case intfIRegister:
        return 'R';
    default:
        return '?';
    }
}

class FeaturesOfModel : public testing::TestWithParam<Model> {};

TEST_P(FeaturesOfModel, AreThoseOfTheTable) {
    FeatureRig rig(GetParam());
    for (const Row& row : kTable) {
        SCOPED_TRACE(row.name);
        const char presence = row.models[static_cast<std::size_t>(GetParam())];
        // A register that is a feature has the name by which it is asked for, and is no feature to the map.
        INode* node = rig.Node(row.name);
        ASSERT_EQ(node != nullptr, presence != ' ');
        if (node == nullptr)
            continue;
        EXPECT_EQ(IsImplemented(node->GetAccessMode()), presence == '+');
        EXPECT_EQ(KindOf(*node), row.kind);
        EXPECT_EQ(node->GetVisibility(), row.visibility);
        EXPECT_TRUE(node->IsFeature());
    }
}

TEST_P(FeaturesOfModel, CanAllBeUsedWithinTheirRangesAndNotBeyond) {
    FeatureRig rig(GetParam());
    const FeatureWalkReport report = WalkFeatures(rig);
    for (const std::string& fault : report.faults)
        ADD_FAILURE() << fault;
    std::set<std::string> lacking;
    std::set<std::string> expectedLacking;
    for (const Row& row : kTable) {
        const char presence = row.models[static_cast<std::size_t>(GetParam())];
        if (presence == '-')
            expectedLacking.insert(row.name);
        if (presence == '+' && IsAvailable(rig.Mode(row.name))) {
            EXPECT_EQ(report.visited.count(row.name), 1u) << row.name << " was never usable";
        }
    }
    const bool small = GetParam() == Model::Small;
    if (!small) // they lie in frames, and none is attached
        expectedLacking.insert({"ChunkFrameID", "ChunkTimestamp", "ChunkExposureTime", "ChunkGain"});
    EXPECT_EQ(report.notImplemented, expectedLacking);
    EXPECT_GT(report.visited.size(), small ? 80u : 150u);
    EXPECT_GT(report.contexts, report.visited.size()) << "selectors were followed";
    EXPECT_GT(report.writes, small ? 100u : 500u);
    EXPECT_GT(report.refusals, small ? 100u : 400u);
}

// What the XML says of the pixel formats: each code is in the list of the stream protocol, none twice.
TEST_P(FeaturesOfModel, PixelFormatsAreThoseOfTheSensor) {
    FeatureRig rig(GetParam());
    NodeList_t entries;
    CEnumerationPtr(rig.Node("PixelFormat"))->GetEntries(entries);
    EXPECT_EQ(entries.size(), GetParam() == Model::Colour ? 28u : 5u);
}

INSTANTIATE_TEST_SUITE_P(Models, FeaturesOfModel,
                         testing::Values(Model::Colour, Model::Mono, Model::LineScan, Model::Small),
                         [](const auto& tested) { return std::string(vcam::TraitsOf(tested.param).option); });

// Walks that find nothing prove little; one on a camera that lies must find it.
TEST(FeatureWalkItself, FindsAValueThatTheRegisterDoesNotHold) {
    FeatureRig rig(Model::Small);
    vcam::RegisterHooks liar;
    const std::uint32_t gain = 0x10400;
    liar.written = [&rig] { rig.model.Memory().SetDouble(0x10400, 1.0); };
    rig.model.Memory().AddHooks(gain, liar);
    const FeatureWalkReport report = WalkFeatures(rig);
    ASSERT_FALSE(report.faults.empty());
    for (const std::string& fault : report.faults)
        EXPECT_EQ(fault.rfind("Gain", 0), 0u) << fault;
}

} // namespace
