// What features do to one another, to the picture and to the stream.
#include <cstring>

#include "Device/FeatureRegisters.h"
#include "FeatureRig.h"

namespace {

using namespace kolt::test;
using namespace GenApi_3_0;
using GenICam_3_0::AccessException;
using GenICam_3_0::GenericException;
using GenICam_3_0::OutOfRangeException;
using vcam::Model;
using vcam::Status;
namespace feature = vcam::feature;

class Features : public testing::Test {
protected:
    FeatureRig rig{Model::Colour};
};

// -- Region and binning

TEST_F(Features, OffsetsAndSizesLimitEachOther) {
    EXPECT_EQ(CIntegerPtr(rig.Node("OffsetX"))->GetMax(), 0) << "the picture is as wide as the sensor";
    rig.Set("Width", 640);
    EXPECT_EQ(CIntegerPtr(rig.Node("OffsetX"))->GetMax(), 1280);
    rig.Set("OffsetX", 1280);
    EXPECT_EQ(CIntegerPtr(rig.Node("Width"))->GetMax(), 640);
    EXPECT_THROW(rig.Set("Width", 648), OutOfRangeException);
    EXPECT_EQ(rig.Poke(feature::kWidth, 648), Status::InvalidParameter);
    EXPECT_EQ(rig.Poke(feature::kOffsetX, 1282), Status::InvalidParameter);
    EXPECT_EQ(rig.Picture().offsetX, 1280u);
    EXPECT_EQ(rig.Picture().width, 640u);
}

TEST_F(Features, BinningShrinksThePictureAndWhatItCanBe) {
    rig.Set("Width", 1600);
    rig.Set("OffsetX", 320);
    rig.Set("BinningHorizontal", 2);
    EXPECT_EQ(rig.Int("WidthMax"), 960);
    EXPECT_EQ(rig.Int("Width"), 960);
    EXPECT_EQ(rig.Int("OffsetX"), 0);
    EXPECT_EQ(rig.Int("HeightMax"), 1080);
    EXPECT_EQ(rig.Int("AutoFunctionAOIWidth"), 960);
    rig.SetText("BinningSelector", "Digital");
    EXPECT_EQ(rig.Int("BinningHorizontal"), 1) << "each stage has its own";
    rig.Set("BinningHorizontal", 2);
    rig.Set("BinningVertical", 2);
    EXPECT_EQ(rig.Int("WidthMax"), 480);
    EXPECT_EQ(rig.Int("HeightMax"), 540);
    const vcam::PictureSettings picture = rig.Picture();
    EXPECT_EQ(picture.binningHorizontal, 4u);
    EXPECT_EQ(picture.binningVertical, 2u);
    EXPECT_EQ(picture.width, 480u);
    EXPECT_EQ(picture.height, 540u);
    EXPECT_EQ(rig.Int("PayloadSize"), 480 * 540);
    rig.Set("BinningHorizontal", 1);
    EXPECT_EQ(rig.Int("WidthMax"), 960);
    EXPECT_EQ(rig.Int("Width"), 480) << "the picture grows when it is asked to";
}

TEST(FeaturesOfASmallSensor, StayWithinItAtTheStrongestBinning) {
    vcam::Config config;
    config.sensorWidth = 64;
    config.sensorHeight = 64;
    FeatureRig rig(config);
    for (const int stage : {0, 1}) {
        rig.Set("BinningSelector", stage);
        rig.Set("BinningHorizontal", 2);
        rig.Set("BinningVertical", 2);
    }
    for (const char* name : {"Width", "Height", "AutoFunctionAOIWidth", "AutoFunctionAOIHeight"}) {
        const CIntegerPtr size = rig.Node(name);
        EXPECT_LE(size->GetMin(), size->GetValue()) << name;
        EXPECT_EQ(size->GetValue(), 16) << name;
        EXPECT_EQ(size->GetMax(), 16) << name;
    }
}

TEST_F(Features, RegionsHaveSizesOfTheirOwnAndOneIsSent) {
    rig.Set("Width", 800);
    rig.SetText("RegionSelector", "Region1");
    EXPECT_EQ(rig.Text("RegionMode"), "Off");
    EXPECT_EQ(rig.Int("Width"), 1920);
    rig.Set("Width", 160);
    rig.Set("OffsetX", 40);
    EXPECT_EQ(rig.Picture().width, 800u) << "chosen is not sent";
    rig.SetText("RegionMode", "On");
    EXPECT_EQ(rig.Picture().width, 160u);
    EXPECT_EQ(rig.Picture().offsetX, 40u);
    EXPECT_THROW(rig.SetText("RegionMode", "Off"), GenericException) << "one is always on";
    rig.SetText("RegionSelector", "Region0");
    EXPECT_EQ(rig.Text("RegionMode"), "Off");
    EXPECT_EQ(rig.Int("Width"), 800);
    rig.SetText("RegionMode", "On");
    EXPECT_EQ(rig.Picture().width, 800u);
}

// -- Locks

TEST_F(Features, WhatTheStreamDependsOnIsLockedWhileItRuns) {
    const std::vector<const char*> locked = {
        "Width",           "Height",          "PixelFormat",       "BinningHorizontal",
        "BinningVertical", "AcquisitionMode", "GevSCPSPacketSize", "DeviceStreamChannelPacketSize",
        "ChunkModeActive", "HDREnable",       "UserSetLoad",       "ImageCompressionMode"};
    for (const char* name : locked)
        EXPECT_TRUE(IsWritable(rig.Mode(name))) << name;
    rig.Set("TLParamsLocked", 1);
    for (const char* name : locked)
        EXPECT_FALSE(IsWritable(rig.Mode(name))) << name;
    EXPECT_THROW(rig.Set("Width", 640), AccessException);
    for (const char* name : {"OffsetX", "ExposureTime", "Gain", "TriggerMode", "LUTEnable", "Gamma"})
        EXPECT_TRUE(IsWritable(rig.Mode(name))) << name;
    rig.Set("TLParamsLocked", 0);
    for (const char* name : locked)
        EXPECT_TRUE(IsWritable(rig.Mode(name))) << name;
}

TEST_F(Features, RegistersRefuseWhileFramesAreTaken) {
    rig.Do("AcquisitionStart");
    EXPECT_EQ(rig.Poke(feature::kWidth, 640), Status::WriteProtect) << "whether the client locked or not";
    EXPECT_EQ(rig.Poke(feature::kBinningHorizontal, 2), Status::WriteProtect);
    EXPECT_EQ(rig.Poke(feature::kUserSetLoad, 1), Status::WriteProtect);
    EXPECT_EQ(rig.Poke(feature::kOffsetX, 0), Status::Success);
    rig.Do("AcquisitionStop");
    EXPECT_EQ(rig.Poke(feature::kWidth, 640), Status::Success);
}

TEST_F(Features, AvailabilityFollowsOtherFeatures) {
    struct Case {
        const char* feature;
        const char* condition;
        const char* available;
        const char* unavailable;
    };
    for (const Case& tried : {Case{"AcquisitionFrameCount", "AcquisitionMode", "MultiFrame", "Continuous"},
                              Case{"TriggerSoftware", "TriggerSource", "Software", "Line1"},
                              Case{"ExposureTime", "ExposureMode", "Timed", "TriggerWidth"},
                              Case{"ImageCompressionQuality", "ImageCompressionMode", "JPEG", "Off"}}) {
        for (int round = 0; round < 2; ++round) {
            rig.SetText(tried.condition, tried.unavailable);
            EXPECT_EQ(rig.Mode(tried.feature), NA) << tried.feature;
            rig.SetText(tried.condition, tried.available);
            EXPECT_TRUE(IsAvailable(rig.Mode(tried.feature))) << tried.feature;
        }
    }
}

TEST_F(Features, AutomaticFunctionsLockWhatTheyChoose) {
    struct Case {
        const char* automatic;
        const char* value;
        std::uint32_t address;
    };
    for (const Case& tried : {Case{"ExposureAuto", "ExposureTime", feature::kExposureTime},
                              Case{"GainAuto", "Gain", feature::kGain},
                              Case{"BalanceWhiteAuto", "BalanceRatio", feature::kBalanceRatio}}) {
        rig.SetText(tried.automatic, "Continuous");
        EXPECT_EQ(rig.Mode(tried.value), RO) << tried.value;
        EXPECT_EQ(rig.Poke(tried.address, 0x40000000), Status::WriteProtect) << tried.value;
        rig.SetText(tried.automatic, "Off");
        EXPECT_EQ(rig.Mode(tried.value), RW) << tried.value;
    }
}

TEST_F(Features, AutomaticFunctionsArriveAndOnceEnds) {
    rig.SetReal("ExposureTime", 100);
    rig.Set("BalanceRatioSelector", 2);
    rig.Set("BalanceRatio", 3000);
    rig.SetText("ExposureAuto", "Once");
    rig.SetText("BalanceWhiteAuto", "Once");
    int frames = 0;
    while (rig.model.StepAutomatics() && frames < 100)
        ++frames;
    EXPECT_GT(frames, 2) << "not at a blow";
    EXPECT_LT(frames, 100);
    EXPECT_NEAR(rig.Real("ExposureTime"), 4000, 100);
    // Grey world: by the gains all three means are alike.
    const vcam::SceneMeans means =
        vcam::MeasureScene(*rig.model.LookedAt(), rig.Picture(), {0, 0, 1920, 1080}, vcam::Moment());
    const auto balanced = [&](int colour, double mean) {
        rig.Set("BalanceRatioSelector", colour);
        return mean * double(rig.Int("BalanceRatio")) / 1024;
    };
    const double green = balanced(1, means.green);
    EXPECT_NEAR(balanced(0, means.red), green, green * 0.02);
    EXPECT_NEAR(balanced(2, means.blue), green, green * 0.02);
    EXPECT_EQ(rig.Text("ExposureAuto"), "Off");
    EXPECT_EQ(rig.Text("BalanceWhiteAuto"), "Off");
    rig.SetText("ExposureAuto", "Continuous");
    EXPECT_FALSE(rig.model.StepAutomatics());
    EXPECT_EQ(rig.Text("ExposureAuto"), "Continuous") << "goes on looking";
}

// The scene is brighter in some places than in others; each area asks for an exposure of its own.
TEST_F(Features, AutomaticExposureLooksAtTheAreaMarkedForIt) {
    const std::vector<vcam::ScenePatch> patches = rig.model.LookedAt()->Patches();
    const auto exposureFor = [&](const std::string& name) {
        const auto patch = std::find_if(patches.begin(), patches.end(),
                                        [&](const vcam::ScenePatch& each) { return each.name == name; });
        rig.Set("AutoFunctionAOIOffsetX", 0);
        rig.Set("AutoFunctionAOIOffsetY", 0);
        rig.Set("AutoFunctionAOIWidth", patch->place.width / 8 * 4);
        rig.Set("AutoFunctionAOIHeight", patch->place.height / 8 * 4);
        rig.Set("AutoFunctionAOIOffsetX", (patch->place.x + 3) / 4 * 4);
        rig.Set("AutoFunctionAOIOffsetY", (patch->place.y + 3) / 4 * 4);
        rig.SetText("ExposureAuto", "Continuous");
        for (int frame = 0; frame < 100 && rig.model.StepAutomatics(); ++frame) {
        }
        rig.SetText("ExposureAuto", "Off");
        return rig.Real("ExposureTime");
    };
    const double white = exposureFor("white");
    const double blue = exposureFor("blue");
    EXPECT_GT(blue, 3 * white);
    rig.Set("AutoFunctionAOIUsageIntensity", 0);
    EXPECT_NEAR(exposureFor("blue"), 4000, 100) << "without a mark the whole picture counts";
}

TEST_F(Features, AutomaticGainTakesOverWhereTheExposureEnds) {
    rig.SetReal("AcquisitionFrameRate", 1000); // at most 1 ms
    rig.SetText("ExposureAuto", "Once");
    rig.SetText("GainAuto", "Once");
    for (int frame = 0; frame < 100 && rig.model.StepAutomatics(); ++frame) {
    }
    EXPECT_NEAR(rig.Real("ExposureTime"), 1000, 1);
    EXPECT_NEAR(rig.Real("Gain"), 12.04, 0.3) << "four times the light";
    EXPECT_EQ(rig.Text("GainAuto"), "Off");
}

TEST_F(Features, LinesZeroAndOneAreInputsForGood) {
    rig.SetText("LineSelector", "Line0");
    EXPECT_FALSE(IsWritable(rig.Mode("LineMode")));
    EXPECT_EQ(rig.Poke(feature::kLineMode, 1), Status::WriteProtect);
    rig.SetText("LineSelector", "Line2");
    EXPECT_TRUE(IsWritable(rig.Mode("LineMode")));
    EXPECT_EQ(rig.Mode("LineSource"), NA);
    rig.SetText("LineMode", "Output");
    EXPECT_TRUE(IsWritable(rig.Mode("LineSource")));
}

// -- What acts on the picture

TEST_F(Features, ValuesReachThePainter) {
    rig.SetReal("ExposureTime", 1234.5);
    rig.SetReal("Gain", 6.5);
    rig.Set("Brightness", -17);
    rig.Set("GammaEnable", 1);
    rig.SetReal("Gamma", 0.45);
    rig.Set("SharpnessEnable", 1);
    rig.Set("Sharpness", 33);
    rig.Set("HueEnable", 1);
    rig.Set("Hue", -45);
    rig.Set("SaturationEnable", 1);
    rig.Set("Saturation", 150);
    for (const int colour : {0, 1, 2}) {
        rig.Set("BalanceRatioSelector", colour);
        rig.Set("BalanceRatio", 1100 + 100 * colour);
    }
    rig.Set("ReverseX", 1);
    rig.SetText("TestPattern", "ColorBar");
    rig.SetText("PixelFormat", "BayerGB10Packed");
    const vcam::PictureSettings p = rig.Picture();
    EXPECT_EQ(p.exposure, 1234.5);
    EXPECT_EQ(p.gain, 6.5);
    EXPECT_EQ(p.blackLevel, -17);
    EXPECT_TRUE(p.gammaEnable);
    EXPECT_EQ(p.gamma, 0.45);
    EXPECT_EQ(p.gammaCurve, vcam::GammaCurve::Power);
    EXPECT_TRUE(p.sharpnessEnable);
    EXPECT_EQ(p.sharpness, 33);
    EXPECT_TRUE(p.hueEnable);
    EXPECT_EQ(p.hue, -45);
    EXPECT_TRUE(p.saturationEnable);
    EXPECT_EQ(p.saturation, 150);
    EXPECT_EQ(p.balance, (std::array<std::uint32_t, 3>{1100, 1200, 1300}));
    EXPECT_TRUE(p.reverseX);
    EXPECT_EQ(p.testPattern, vcam::TestPattern::ColourBars);
    EXPECT_EQ(p.pixelFormat, 0x010C0028u);
    EXPECT_EQ(rig.Text("PixelSize"), "Bpp12");
    rig.SetText("GammaSelector", "sRGB");
    EXPECT_EQ(rig.Picture().gammaCurve, vcam::GammaCurve::Srgb);
    EXPECT_GE(rig.stream.changes, 18u) << "each is told to the stream";
}

TEST_F(Features, FreshCameraShowsTheSceneAsItIs) {
    vcam::PictureSettings plain;
    plain.width = 1920;
    plain.height = 1080;
    plain.pixelFormat = 0x01080001;
    vcam::PictureSettings made = rig.Picture();
    EXPECT_EQ(*made.lookup, vcam::IdentityLookup());
    made.lookup = nullptr;
    made.hdr = plain.hdr; // not enabled
    made.sharpness = plain.sharpness;
    EXPECT_EQ(made, plain);
}

TEST_F(Features, LookupTableIsWrittenEntryByEntryOrAsAWhole) {
    rig.Set("LUTEnable", 1);
    for (const int index : {0, 511, 1023}) {
        rig.Set("LUTIndex", index);
        rig.Set("LUTValue", 4095 - index);
    }
    EXPECT_TRUE(rig.Picture().lookupEnable);
    const vcam::LookupTable table = *rig.Picture().lookup;
    EXPECT_EQ(table[0], 4095);
    EXPECT_EQ(table[511], 4095 - 511);
    EXPECT_EQ(table[1023], 4095 - 1023);
    EXPECT_EQ(table[512], vcam::IdentityLookup()[512]);

    const CRegisterPtr all = rig.Node("LUTValueAll");
    ASSERT_EQ(all->GetLength(), 4096);
    std::vector<std::uint8_t> words(4096);
    for (std::uint32_t index = 0; index < 1024; ++index)
        vcam::Put32(words.data() + 4 * index, 4095 - 4 * index);
    all->Set(words.data(), 4096);
    EXPECT_EQ((*rig.Picture().lookup)[1000], 95);
    rig.Set("LUTIndex", 1000);
    EXPECT_EQ(rig.Int("LUTValue"), 95);
    vcam::Put32(words.data() + 400, 4096);
    EXPECT_THROW(all->Set(words.data(), 4096), GenericException) << "an entry has 12 bits";
    EXPECT_EQ((*rig.Picture().lookup)[100], 4095 - 400);
}

TEST_F(Features, HdrSetsHaveGainsAndShuttersOfTheirOwn) {
    for (const int set : {0, 1, 2, 3}) {
        rig.Set("HDRSelector", set);
        rig.SetReal("HDRGain", 1.5 * set);
        rig.Set("HDRShutter", 1000 + set);
    }
    EXPECT_FALSE(rig.Picture().hdrEnable);
    rig.Set("HDREnable", 1);
    const vcam::PictureSettings p = rig.Picture();
    EXPECT_TRUE(p.hdrEnable);
    for (std::size_t set = 0; set < 4; ++set) {
        EXPECT_EQ(p.hdr[set].gain, 1.5 * double(set));
        EXPECT_EQ(p.hdr[set].exposure, 1000.0 + double(set));
    }
    EXPECT_THROW(rig.Set("HDRSelector", 4), OutOfRangeException);
}

TEST_F(Features, FactsOfTheFrameAreChosenOneByOneOrByTheMask) {
    EXPECT_EQ(rig.Picture().embedded, 0u);
    rig.SetText("FrameSpecInfoSelector", "Exposure");
    rig.Set("FrameSpecInfo", 1);
    EXPECT_EQ(rig.Int("FrameSpecInfo_Reg"), 4);
    rig.Set("FrameSpecInfo_Reg", 0x1F1);
    EXPECT_EQ(rig.Int("FrameSpecInfo"), 0) << "the mask says otherwise by now";
    EXPECT_EQ(rig.Picture().embedded, 0x1F1u);
    for (const int fact : {0, 4, 8}) {
        rig.Set("FrameSpecInfoSelector", fact);
        EXPECT_EQ(rig.Int("FrameSpecInfo"), 1);
    }
    rig.SetText("ImageCompressionMode", "JPEG");
    EXPECT_EQ(rig.Picture().embedded, 0u) << "a compressed picture has no room for facts";
    EXPECT_THROW(rig.Set("FrameSpecInfoSelector", 1), GenericException);
    EXPECT_EQ(rig.Poke(feature::kFrameInfoSelector, 1), Status::WriteProtect);
    rig.SetText("ImageCompressionMode", "Off");
    EXPECT_EQ(rig.Picture().embedded, 0x1F1u);
}

TEST(FeaturesOfTheMonoCamera, HaveNoWhiteBalanceToTell) {
    FeatureRig rig(Model::Mono);
    for (const int fact : {0, 1, 2, 3, 5, 6, 7, 8})
        EXPECT_NO_THROW(rig.Set("FrameSpecInfoSelector", fact)) << fact;
    EXPECT_THROW(rig.Set("FrameSpecInfoSelector", 4), GenericException);
    EXPECT_EQ(rig.Poke(feature::kFrameInfoSelector, 4), Status::InvalidParameter);
    rig.Set("FrameSpecInfo_Reg", 0xFFFF);
    EXPECT_EQ(rig.Int("FrameSpecInfo_Reg"), 0x1EF);
}

// -- Rates

TEST_F(Features, ResultingFrameRateKnowsWhatHoldsItBack) {
    EXPECT_NEAR(rig.Real("ResultingFrameRate"), 30, 1e-9);
    rig.SetReal("ExposureTime", 100000);
    EXPECT_NEAR(rig.Real("ResultingFrameRate"), 10, 1e-9) << "exposure";
    rig.SetReal("ExposureTime", 10);
    rig.Set("AcquisitionFrameRateEnable", 0);
    const double linked = rig.Real("ResultingFrameRate");
    EXPECT_NEAR(linked, 2500e6 / 8 / (1920 * 1080 * 1500.0 / 1464), 1) << "link";
    rig.Set("GevSCPSPacketSize", 9000);
    const double jumbo = rig.Real("ResultingFrameRate");
    EXPECT_GT(jumbo, linked * 1.01) << "fewer headers";
    rig.Set("GevSCPD", 20000);
    EXPECT_LT(rig.Real("ResultingFrameRate"), jumbo * 0.7) << "pauses";
    rig.Set("GevSCPD", 0);
    rig.Set("Width", 32);
    EXPECT_NEAR(rig.Real("ResultingFrameRate"), 1e6 / ((1080 + 20) * 2.0), 1) << "read-out";
    rig.Set("Height", 100);
    EXPECT_NEAR(rig.Real("ResultingFrameRate"), 1e6 / ((100 + 20) * 2.0), 1);
}

TEST(FeaturesOfTheLineScanCamera, KeepTimeByLines) {
    FeatureRig rig(Model::LineScan);
    EXPECT_EQ(rig.Text("DeviceScanType"), "Linescan");
    EXPECT_EQ(rig.Int("DeviceScanType"), 1);
    EXPECT_EQ(rig.Int("SensorHeight"), 1);
    rig.Set("Height", 500);
    rig.SetReal("AcquisitionLineRate", 10000);
    EXPECT_EQ(rig.Int("ResultingLineRate"), 10000);
    EXPECT_NEAR(rig.Real("ResultingFrameRate"), 20, 1e-9) << "lines a second by lines a frame";
    rig.SetReal("ExposureTime", 400);
    EXPECT_EQ(rig.Int("ResultingLineRate"), 2500);
    EXPECT_NEAR(rig.Real("ResultingFrameRate"), 5, 1e-9);
    rig.SetReal("ExposureTime", 20);
    rig.Set("AcquisitionLineRateEnable", 0);
    EXPECT_GT(rig.Int("ResultingLineRate"), 40000);
    EXPECT_EQ(rig.Picture().exposure, vcam::kNominalExposure) << "20 us are right for a line";
}

// -- Triggers and lines

TEST_F(Features, SoftwareTriggersCountForTheSourceSoftware) {
    rig.SetText("TriggerMode", "On");
    rig.Do("TriggerSoftware");
    EXPECT_EQ(rig.stream.frames.size(), 1u);
    rig.SetText("TriggerSelector", "AcquisitionStart");
    EXPECT_EQ(rig.Text("TriggerMode"), "Off") << "each kind has its own";
    rig.SetText("TriggerMode", "On");
    rig.Do("TriggerSoftware");
    EXPECT_EQ(rig.stream.frames.size(), 2u);
    EXPECT_EQ(rig.stream.acquisitions, 1u);
    rig.SetText("TriggerSelector", "FrameStart");
    rig.SetText("TriggerSource", "Line1");
    EXPECT_THROW(rig.Do("TriggerSoftware"), AccessException);
    EXPECT_TRUE(rig.model.Settings().frameTrigger);
    rig.SetReal("TriggerDelay", 250);
    EXPECT_EQ(rig.model.Settings().frameTriggerDelayUs, 250);
}

TEST_F(Features, EdgesAtALineAreTriggersAsActivationSays) {
    struct Case {
        const char* activation;
        bool inverted;
        std::size_t up, down; // triggers at each edge
    };
    rig.SetText("TriggerMode", "On");
    rig.SetText("TriggerSource", "Line1");
    rig.SetText("LineSelector", "Line1");
    for (const Case& tried :
         {Case{"RisingEdge", false, 1, 0}, Case{"FallingEdge", false, 0, 1}, Case{"AnyEdge", false, 1, 1},
          Case{"RisingEdge", true, 0, 1}, Case{"FallingEdge", true, 1, 0}}) {
        SCOPED_TRACE(tried.activation);
        rig.SetText("TriggerActivation", tried.activation);
        rig.Set("LineInverter", tried.inverted ? 1 : 0);
        rig.stream.frames.clear();
        rig.model.SetLine(1, true);
        EXPECT_EQ(rig.stream.frames.size(), tried.up);
        EXPECT_EQ(rig.Int("LineStatus"), tried.inverted ? 0 : 1);
        rig.model.SetLine(1, true);
        EXPECT_EQ(rig.stream.frames.size(), tried.up) << "no edge";
        rig.model.SetLine(1, false);
        EXPECT_EQ(rig.stream.frames.size(), tried.up + tried.down);
        rig.stream.frames.clear();
        rig.model.PulseLine(1);
        EXPECT_EQ(rig.stream.frames.size(), tried.up + tried.down);
        rig.stream.frames.clear();
        rig.model.PulseLine(0);
        EXPECT_EQ(rig.stream.frames.size(), 0u) << "another line";
    }
}

TEST_F(Features, VendorRegistersMoveTheLines) {
    rig.SetText("TriggerMode", "On");
    rig.SetText("TriggerSource", "Line3");
    rig.Set("VcamPulseLine", 3);
    EXPECT_EQ(rig.stream.frames.size(), 1u);
    rig.Set("VcamLineLevels", 0b1010);
    EXPECT_EQ(rig.stream.frames.size(), 2u);
    EXPECT_EQ(rig.Int("LineStatusAll"), 0b1010);
    EXPECT_EQ(rig.Int("VcamLineLevels"), 0b1010);
    EXPECT_EQ(rig.model.Settings().lineInputs, 0b1010);
}

TEST_F(Features, OutputsShowUserValuesAndTakeNoTrigger) {
    rig.SetText("TriggerMode", "On");
    rig.SetText("TriggerSource", "Line2");
    rig.SetText("LineSelector", "Line2");
    rig.SetText("LineMode", "Output");
    rig.SetText("LineSource", "UserOutput1");
    rig.model.PulseLine(2);
    EXPECT_TRUE(rig.stream.frames.empty());
    EXPECT_EQ(rig.Int("LineStatus"), 0);
    rig.SetText("UserOutputSelector", "UserOutput1");
    rig.Set("UserOutputValue", 1);
    EXPECT_EQ(rig.Int("LineStatus"), 1);
    EXPECT_EQ(rig.model.Settings().lineOutputs, 0b0100);
    EXPECT_EQ(rig.model.Settings().lineInputs, 0);
    rig.Set("LineInverter", 1);
    EXPECT_EQ(rig.Int("LineStatus"), 0);
}

TEST_F(Features, PulseAtALineCanBeTheExposure) {
    rig.SetText("TriggerMode", "On");
    rig.SetText("TriggerSource", "Line0");
    rig.SetText("ExposureMode", "TriggerWidth");
    rig.model.SetLine(0, true);
    EXPECT_TRUE(rig.stream.frames.empty()) << "the exposure has begun";
    rig.model.SetLine(0, false);
    ASSERT_EQ(rig.stream.frames.size(), 1u);
    EXPECT_GE(rig.stream.frames[0], 1.0);
    rig.model.SetLine(0, true);
    rig.model.PowerUp();
    rig.SetText("TriggerMode", "On");
    rig.model.SetLine(0, false);
    EXPECT_EQ(rig.stream.frames.size(), 1u) << "a pulse does not outlast a reset";
}

} // namespace
