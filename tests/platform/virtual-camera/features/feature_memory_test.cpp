// What the camera keeps: user sets, files, and what outlives its power.
#include <cstring>

#include "Device/BootstrapRegisters.h"
#include "Device/FeatureRegisters.h"
#include "FeatureRig.h"

namespace {

using namespace kolt::test;
using namespace GenApi_3_0;
using GenICam_3_0::AccessException;
using GenICam_3_0::GenericException;
using vcam::Model;
using vcam::Status;
namespace feature = vcam::feature;

class Memory : public testing::Test {
protected:
    std::shared_ptr<vcam::Flash> flash = std::make_shared<vcam::Flash>();
    vcam::Config config;
    FeatureRig rig{config, flash};
};

TEST_F(Memory, UserSetsBringTheSettingsBack) {
    rig.SetReal("ExposureTime", 111);
    rig.Set("Width", 640);
    rig.Set("OffsetX", 100);
    rig.Set("BalanceRatioSelector", 2);
    rig.Set("BalanceRatio", 2222);
    rig.Set("LUTIndex", 7);
    rig.Set("LUTValue", 77);
    rig.SetText("TriggerSelector", "AcquisitionStart");
    rig.SetText("TriggerMode", "On");
    rig.SetText("UserSetSelector", "UserSet2");
    rig.Do("UserSetSave");
    // Everything by the cache of the map, which must learn that it is stale.
    rig.SetReal("ExposureTime", 999);
    rig.Set("OffsetX", 0);
    rig.Set("Width", 320);
    rig.Set("BalanceRatio", 100);
    rig.Set("LUTValue", 1);
    rig.SetText("TriggerMode", "Off");
    rig.SetText("TriggerSelector", "FrameStart");
    rig.Do("UserSetLoad");
    EXPECT_EQ(rig.Real("ExposureTime"), 111);
    EXPECT_EQ(rig.Int("Width"), 640);
    EXPECT_EQ(rig.Int("OffsetX"), 100);
    EXPECT_EQ(rig.Int("BalanceRatioSelector"), 2);
    EXPECT_EQ(rig.Int("BalanceRatio"), 2222);
    EXPECT_EQ(rig.Int("LUTValue"), 77);
    EXPECT_EQ((*rig.Picture().lookup)[7], 77);
    EXPECT_EQ(rig.Text("TriggerSelector"), "AcquisitionStart");
    EXPECT_EQ(rig.Text("TriggerMode"), "On");
    rig.SetText("UserSetSelector", "Default");
    rig.Do("UserSetLoad");
    EXPECT_EQ(rig.Real("ExposureTime"), 4000);
    EXPECT_EQ(rig.Int("Width"), 1920);
    EXPECT_EQ(rig.Int("BalanceRatioSelector"), 0);
    EXPECT_EQ(rig.Text("TriggerMode"), "Off");
}

// Each setting that a client may have in its cache is asked for anew after UserSetLoad.
TEST_F(Memory, LoadingAUserSetInvalidatesEverySetting) {
    NodeList_t nodes;
    rig.map._GetNodes(nodes);
    std::vector<INode*> settings;
    for (INode* node : nodes) {
        if (node->IsStreamable() && IsReadable(node->GetAccessMode()))
            settings.push_back(node);
    }
    EXPECT_GT(settings.size(), 60u);
    const auto textOf = [](INode* node, bool ignoreCache) {
        return std::string(CValuePtr(node)->ToString(false, ignoreCache).c_str());
    };
    // A set that differs from the maker's in all that a register can hold and the map would still read.
    rig.Set("UserSetSelector", 1);
    rig.Do("UserSetSave");
    flash->Update([](vcam::FlashContent& content) {
        for (auto& [address, bytes] : *content.userSets[0]) {
            const bool word = bytes.size() == 4;
            const bool binary = word && vcam::Get32(bytes.data()) <= 1;
            const bool needsOne = address == feature::kGammaSelector || address == feature::kLutSelector ||
                                  (address >= feature::kBinningHorizontal &&
                                   address < feature::kBinningHorizontal + 2 * feature::kBinningStride);
            if (binary && !needsOne)
                vcam::Put32(bytes.data(), 1 - vcam::Get32(bytes.data()));
        }
    });
    std::vector<std::string> before;
    for (INode* node : settings)
        before.push_back(textOf(node, false));
    rig.Do("UserSetLoad");
    unsigned changed = 0;
    for (std::size_t i = 0; i < settings.size(); ++i) {
        if (!IsReadable(settings[i]->GetAccessMode()))
            continue;
        const std::string cached = textOf(settings[i], false);
        EXPECT_EQ(cached, textOf(settings[i], true)) << settings[i]->GetName().c_str();
        changed += cached != before[i] ? 1 : 0;
    }
    EXPECT_GT(changed, 20u);
}

TEST_F(Memory, MakersSetIsNotSaved) {
    EXPECT_FALSE(IsWritable(rig.Mode("UserSetSave")));
    EXPECT_EQ(rig.Poke(feature::kUserSetSave, 1), Status::WriteProtect);
    rig.Set("UserSetSelector", 3);
    EXPECT_TRUE(IsWritable(rig.Mode("UserSetSave")));
    rig.Set("TLParamsLocked", 1);
    EXPECT_FALSE(IsWritable(rig.Mode("UserSetSave")));
    EXPECT_FALSE(IsWritable(rig.Mode("UserSetLoad")));
}

TEST_F(Memory, SetThatWasNeverSavedIsTheMakers) {
    rig.SetReal("Gain", 3);
    rig.Set("UserSetSelector", 3);
    rig.Do("UserSetLoad");
    EXPECT_EQ(rig.Real("Gain"), 0);
}

TEST_F(Memory, DefaultSetIsLoadedAtPowerUp) {
    rig.SetReal("Gain", 12);
    rig.Set("UserSetSelector", 1);
    rig.Do("UserSetSave");
    rig.SetText("UserSetDefault", "UserSet1");
    rig.SetReal("Gain", 5);
    rig.Set("TLParamsLocked", 1);
    rig.model.PowerUp();
    rig.map._InvalidateNodes();
    EXPECT_EQ(rig.Real("Gain"), 12);
    EXPECT_EQ(rig.Int("TLParamsLocked"), 0);
    EXPECT_EQ(rig.Text("UserSetDefault"), "UserSet1");

    FeatureRig next(config, flash);
    EXPECT_EQ(next.Real("Gain"), 12) << "also in a camera that is started again";
    EXPECT_EQ(FeatureRig(config).Real("Gain"), 0) << "and not in a fresh one";
}

TEST_F(Memory, NameAndPersistentAddressOutliveThePower) {
    rig.SetText("DeviceUserID", "left");
    rig.Set("GevPersistentIPAddress", 0x0A000005);
    rig.Set("GevPersistentSubnetMask", 0xFF000000);
    rig.Set("GevPersistentDefaultGateway", 0x0A000001);
    EXPECT_FALSE(rig.model.PersistentNetwork()) << "not switched on";
    EXPECT_EQ(rig.Int("GevCurrentIPConfigurationPersistentIP"), 0);
    EXPECT_EQ(rig.Int("GevCurrentIPConfigurationDHCP"), 1);
    rig.Set("GevCurrentIPConfigurationPersistentIP", 1);
    rig.Set("GevCurrentIPConfigurationDHCP", 0);
    EXPECT_EQ(rig.Int("GevCurrentIPConfigurationLLA"), 1) << "for good";
    EXPECT_EQ(rig.model.Memory().Get32(vcam::bootstrap::kIpConfiguration), 5u);

    FeatureRig next(config, flash);
    EXPECT_EQ(next.Text("DeviceUserID"), "left");
    EXPECT_EQ(next.Int("GevPersistentIPAddress"), 0x0A000005);
    EXPECT_EQ(next.Int("GevCurrentIPConfigurationPersistentIP"), 1);
    EXPECT_EQ(next.Int("GevCurrentIPConfigurationDHCP"), 0);
    const auto network = next.model.PersistentNetwork();
    ASSERT_TRUE(network);
    EXPECT_EQ(network->address, 0x0A000005u);
    EXPECT_EQ(network->mask, 0xFF000000u);
    EXPECT_EQ(network->gateway, 0x0A000001u);
}

TEST_F(Memory, MacAddressIsTheSameByAllItsFeatures) {
    config.mac = {2, 0x11, 0x22, 0x33, 0x44, 0x55};
    FeatureRig made(config);
    EXPECT_EQ(made.Int("GevMACAddrHigh_Reg"), 0x0211);
    EXPECT_EQ(made.Int("GevMACAddrLow_Reg"), 0x22334455);
    EXPECT_EQ(made.Int("GevMACAddress"), 0x021122334455);
}

// -- Files

class Files : public Memory {
protected:
    bool Operate(const char* operation) {
        rig.SetText("FileOperationSelector", operation);
        rig.Do("FileOperationExecute");
        return rig.Text("FileOperationStatus") == "Success";
    }
    bool Open(const char* file, const char* mode) {
        rig.SetText("FileSelector", file);
        rig.SetText("FileOpenMode", mode);
        return Operate("Open");
    }
    void Fill(const std::string& text) {
        std::vector<std::uint8_t> buffer(512);
        std::copy(text.begin(), text.end(), buffer.begin());
        CRegisterPtr(rig.Node("FileAccessBuffer"))->Set(buffer.data(), 512);
        rig.Set("FileAccessLength", static_cast<std::int64_t>(text.size()));
    }
    std::string Buffer() {
        std::vector<std::uint8_t> buffer(512);
        CRegisterPtr(rig.Node("FileAccessBuffer"))->Get(buffer.data(), 512);
        return {buffer.begin(), buffer.begin() + rig.Int("FileOperationResult")};
    }
};

TEST_F(Files, AreWrittenReadAndDeleted) {
    ASSERT_TRUE(Open("UserFile2", "Write"));
    Fill("Hello, ");
    ASSERT_TRUE(Operate("Write"));
    EXPECT_EQ(rig.Int("FileOperationResult"), 7);
    EXPECT_EQ(rig.Int("FileAccessOffset"), 7) << "the next one goes on from here";
    Fill("world");
    ASSERT_TRUE(Operate("Write"));
    EXPECT_EQ(rig.Int("FileSize"), 0) << "kept when it is closed";
    ASSERT_TRUE(Operate("Close"));
    EXPECT_EQ(rig.Int("FileSize"), 12);

    ASSERT_TRUE(Open("UserFile2", "Read"));
    rig.Set("FileAccessLength", 512);
    ASSERT_TRUE(Operate("Read"));
    EXPECT_EQ(Buffer(), "Hello, world");
    ASSERT_TRUE(Operate("Read"));
    EXPECT_EQ(rig.Int("FileOperationResult"), 0) << "the end";
    rig.Set("FileAccessOffset", 7);
    rig.Set("FileAccessLength", 3);
    ASSERT_TRUE(Operate("Read"));
    EXPECT_EQ(Buffer(), "wor");
    ASSERT_TRUE(Operate("Close"));

    ASSERT_TRUE(Operate("Delete"));
    EXPECT_EQ(rig.Int("FileSize"), 0);
    EXPECT_FALSE(Open("UserFile2", "Read")) << "gone";
    EXPECT_FALSE(Operate("Delete"));
    rig.SetText("FileSelector", "UserFile1");
    EXPECT_GT(rig.Int("FileSize"), 0) << "the other one is untouched";
}

TEST_F(Files, RefuseWhatMakesNoSense) {
    EXPECT_FALSE(Operate("Close")) << "not open";
    EXPECT_FALSE(Operate("Read"));
    EXPECT_FALSE(Operate("Write"));
    ASSERT_TRUE(Open("UserFile1", "Read"));
    EXPECT_FALSE(Operate("Open")) << "open already";
    EXPECT_FALSE(Operate("Write")) << "for reading";
    EXPECT_FALSE(Operate("Delete")) << "while it is open";
    rig.Set("FileAccessOffset", 1000);
    EXPECT_FALSE(Operate("Read")) << "behind the end";
    ASSERT_TRUE(Operate("Close"));
    ASSERT_TRUE(Open("UserFile1", "Write"));
    EXPECT_FALSE(Operate("Read")) << "for writing";
    rig.Set("FileAccessOffset", 1);
    EXPECT_FALSE(Operate("Write")) << "a hole";
    ASSERT_TRUE(Operate("Close"));
    EXPECT_FALSE(Open("DeviceLog", "Write")) << "the log is the camera's";
    EXPECT_FALSE(Operate("Delete"));
    EXPECT_TRUE(Open("DeviceLog", "Read"));
}

TEST_F(Files, GrowToTheirLimit) {
    ASSERT_TRUE(Open("UserFile1", "Write"));
    Fill(std::string(512, 'x'));
    for (int block = 0; block < 128; ++block)
        ASSERT_TRUE(Operate("Write")) << block;
    EXPECT_FALSE(Operate("Write")) << "64 KiB";
    ASSERT_TRUE(Operate("Close"));
    EXPECT_EQ(rig.Int("FileSize"), 65536);
}

TEST_F(Files, OutliveThePowerUnlessTheyWereOpen) {
    ASSERT_TRUE(Open("UserFile1", "ReadWrite"));
    rig.Set("FileAccessOffset", 0);
    Fill("N");
    ASSERT_TRUE(Operate("Write"));
    ASSERT_TRUE(Operate("Close"));
    ASSERT_TRUE(Open("UserFile2", "Write"));
    Fill("lost");
    ASSERT_TRUE(Operate("Write"));
    rig.SetText("FileSelector", "UserFile1");
    const std::int64_t size = rig.Int("FileSize");
    rig.model.PowerUp();
    rig.map._InvalidateNodes();
    EXPECT_FALSE(Operate("Close")) << "nothing is open";
    rig.SetText("FileSelector", "UserFile2");
    EXPECT_EQ(rig.Int("FileSize"), 0);
    FeatureRig next(config, flash);
    next.SetText("FileSelector", "UserFile1");
    EXPECT_EQ(next.Int("FileSize"), size);
}

} // namespace
