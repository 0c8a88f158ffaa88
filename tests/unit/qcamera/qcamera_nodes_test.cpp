#include "QCameraFixture.h"

#include <cstring>

namespace {

class Nodes : public QCameraFixture {
protected:
    std::string Remark() {
        char buffer[513] = {};
        return camera->GetLastErrorRemark(buffer, 513) ? buffer : "";
    }
};

TEST_F(Nodes, WithoutAConnectionNothingIsRead) {
    int i = 0;
    long long l = 0;
    float f = 0;
    char text[16];
    GenApi_3_0::_EAccessMode mode{};
    EXPECT_EQ(camera->GetBooleanNodePropertyValue("ReverseX", &i), 0);
    EXPECT_EQ(camera->GetIntegerNodePropertyValue("Width", &l), 0);
    EXPECT_EQ(camera->GetFloatNodePropertyValue("ExposureTime", &f), 0);
    EXPECT_EQ(camera->GetEnumerationNodePropertyValue("PixelFormat", &i), 0);
    EXPECT_EQ(camera->GetStringRegNodePropertyValue("DeviceUserID", text, 16), 0);
    EXPECT_EQ(camera->SetIntegerNodePropertyValue("Width", 64), 0);
    EXPECT_EQ(camera->SetCommandNodePropertyValue("TriggerSoftware"), 0);
    EXPECT_EQ(camera->GetBaseNodeAccessMode("Width", mode), 0);
    EXPECT_EQ(camera->XML_TLParamsLock(true), 0u);
    EXPECT_EQ(Remark(), "");
    EXPECT_EQ(camera->GetCheckPacketSize(), -1);
}

TEST_F(Nodes, AFloatLimitThatIsNoFloatCanBeReached) {
    std::string xml = support::CameraXml();
    const std::string limits = "<Min>10</Min><Max>1000000</Max>";
    xml.replace(xml.find(limits), limits.size(), "<Min>-0.3</Min><Max>0.1</Max>");
    Script(xml);
    Open();
    const auto exact = [this] {
        return dynamic_cast<GenApi_3_0::IFloat*>(camera->GetNodeMapRef()->_GetNode("ExposureTime"))
            ->GetValue();
    };
    ASSERT_GT(static_cast<double>(0.1f), 0.1);
    EXPECT_EQ(camera->SetFloatNodePropertyValue("ExposureTime", 0.1f), 1) << Remark();
    EXPECT_EQ(exact(), 0.1);
    EXPECT_EQ(camera->SetFloatNodePropertyValue("ExposureTime", -0.3f), 1) << Remark();
    EXPECT_EQ(exact(), -0.3);
    EXPECT_EQ(camera->SetFloatNodePropertyValue("ExposureTime", 0.05f), 1);
    EXPECT_EQ(exact(), static_cast<double>(0.05f)) << "inside the range nothing is changed";
    EXPECT_EQ(camera->SetFloatNodePropertyValue("ExposureTime", 0.10001f), 0) << "beyond is beyond";
    EXPECT_NE(Remark(), "");
    EXPECT_EQ(exact(), static_cast<double>(0.05f));
}

TEST_F(Nodes, NullArguments) {
    Open();
    int i = 0;
    long long l = 0;
    float f = 0;
    char text[16];
    GenApi_3_0::_EAccessMode mode{};
    EXPECT_EQ(camera->GetBooleanNodePropertyValue(nullptr, &i), 0);
    EXPECT_EQ(camera->GetBooleanNodePropertyValue("ReverseX", nullptr), 0);
    EXPECT_EQ(camera->GetIntegerNodePropertyValue(nullptr, &l), 0);
    EXPECT_EQ(camera->GetIntegerNodePropertyValue("Width", nullptr), 0);
    EXPECT_EQ(camera->GetIntegerNodePropertyValue("Width", &l, nullptr, &l), 0);
    EXPECT_EQ(camera->GetFloatNodePropertyValue("ExposureTime", nullptr), 0);
    EXPECT_EQ(camera->GetFloatNodePropertyValue("ExposureTime", &f, &f, nullptr), 0);
    EXPECT_EQ(camera->GetEnumerationNodePropertyValue("PixelFormat", nullptr), 0);
    EXPECT_EQ(camera->GetStringRegNodePropertyValue("DeviceUserID", nullptr, 16), 0);
    EXPECT_EQ(camera->GetStringRegNodePropertyValue("DeviceUserID", text, 16, nullptr), 0);
    EXPECT_EQ(camera->SetStringRegNodePropertyValue("DeviceUserID", nullptr), 0);
    EXPECT_EQ(camera->SetStringRegNodePropertyValue(nullptr, "x"), 0);
    EXPECT_EQ(camera->SetCommandNodePropertyValue(nullptr), 0);
    EXPECT_EQ(camera->GetBaseNodeAccessMode(nullptr, mode), 0);
}

TEST_F(Nodes, EachKindReadsAndWrites) {
    Open();
    int i = 7;
    EXPECT_EQ(camera->GetBooleanNodePropertyValue("ReverseX", &i), 1);
    EXPECT_EQ(i, 0);
    EXPECT_EQ(camera->SetBooleanNodePropertyValue("ReverseX", 5), 1);
    EXPECT_EQ(Register(reg::ReverseX), 1u) << "any non-zero is true";

    long long value = 0;
    long long maximum = 0;
    long long minimum = 0;
    EXPECT_EQ(camera->GetIntegerNodePropertyValue("Width", &value), 1);
    EXPECT_EQ(value, 64);
    EXPECT_EQ(camera->GetIntegerNodePropertyValue("Width", &value, &maximum, &minimum), 1);
    EXPECT_EQ(maximum, 8192);
    EXPECT_EQ(minimum, 16);
    EXPECT_EQ(camera->SetIntegerNodePropertyValue("Width", 128), 1);
    EXPECT_EQ(Register(reg::Width), 128u);

    float f = 0;
    float fMaximum = 0;
    float fMinimum = 0;
    EXPECT_EQ(camera->GetFloatNodePropertyValue("ExposureTime", &f, &fMaximum, &fMinimum), 1);
    EXPECT_EQ(f, 10000.0f);
    EXPECT_EQ(fMaximum, 1000000.0f);
    EXPECT_EQ(fMinimum, 10.0f);
    EXPECT_EQ(camera->SetFloatNodePropertyValue("ExposureTime", 2500.5f), 1);
    EXPECT_EQ(camera->GetFloatNodePropertyValue("ExposureTime", &f), 1);
    EXPECT_EQ(f, 2500.5f);

    char symbol[128] = {};
    EXPECT_EQ(camera->GetEnumerationNodePropertyValue("TriggerMode", &i, symbol, 128), 1);
    EXPECT_EQ(i, 5);
    EXPECT_STREQ(symbol, "Off");
    EXPECT_EQ(camera->SetEnumerationNodePropertyValue("TriggerMode", 6), 1);
    EXPECT_EQ(Register(reg::TriggerMode), 6u);

    char text[20] = {};
    int length = 0;
    EXPECT_EQ(camera->GetStringRegNodePropertyValue("DeviceUserID", text, 20, &length), 1);
    EXPECT_STREQ(text, "east");
    EXPECT_EQ(length, 16);
    EXPECT_EQ(camera->SetStringRegNodePropertyValue("DeviceUserID", "west"), 1);
    EXPECT_EQ(camera->GetStringRegNodePropertyValue("DeviceUserID", text, 3), 1);
    EXPECT_EQ(std::string(text, 3), "wes") << "cut at the length";

    EXPECT_EQ(camera->SetCommandNodePropertyValue("TriggerSoftware"), 1);
    EXPECT_EQ(Register(reg::TriggerSoftware), 1u);

    GenApi_3_0::_EAccessMode mode{};
    EXPECT_EQ(camera->GetBaseNodeAccessMode("Width", mode), 1);
    EXPECT_EQ(mode, GenApi_3_0::RW);
    EXPECT_EQ(Remark(), "");
}

TEST_F(Nodes, TheSymbolFillsItsBufferWithZeros) {
    Open();
    char symbol[8];
    std::memset(symbol, 'x', sizeof symbol);
    int i = 0;
    EXPECT_EQ(camera->GetEnumerationNodePropertyValue("TriggerMode", &i, symbol, 8), 1);
    EXPECT_EQ(std::memcmp(symbol, "Off\0\0\0\0\0", 8), 0);
    char two[3] = {'x', 'x', 'x'};
    EXPECT_EQ(camera->GetEnumerationNodePropertyValue("TriggerMode", &i, two, 2), 1);
    EXPECT_EQ(std::memcmp(two, "Ofx", 3), 0) << "exactly the length";
}

TEST_F(Nodes, AWrongKindGivesNothingAndLeavesNoRemark) {
    Open();
    int i = 0;
    long long l = 0;
    float f = 0;
    EXPECT_EQ(camera->GetIntegerNodePropertyValue("ReverseX", &l), 0);
    EXPECT_EQ(camera->GetBooleanNodePropertyValue("Width", &i), 0);
    EXPECT_EQ(camera->GetFloatNodePropertyValue("TriggerMode", &f), 0);
    EXPECT_EQ(camera->GetIntegerNodePropertyValue("NoSuchNode", &l), 0);
    EXPECT_EQ(camera->SetCommandNodePropertyValue("Width"), 0);
    EXPECT_EQ(camera->SetIntegerNodePropertyValue("NoSuchNode", 1), 0);
    EXPECT_EQ(Remark(), "");
}

TEST_F(Nodes, ARefusedWriteLeavesARemarkAndTheValue) {
    Open();
    EXPECT_EQ(camera->SetIntegerNodePropertyValue("Width", 9000), 0);
    EXPECT_EQ(Register(reg::Width), 64u);
    const std::string first = Remark();
    EXPECT_EQ(first.rfind("what:", 0), 0u) << first;
    EXPECT_NE(first.find("Width"), std::string::npos) << first;
    EXPECT_NE(first.find(" SourceFileName:"), std::string::npos) << first;
    EXPECT_EQ(camera->SetIntegerNodePropertyValue("Width", 128), 1);
    EXPECT_EQ(Remark(), first) << "a later success leaves it";
    EXPECT_EQ(camera->SetFloatNodePropertyValue("ExposureTime", -1.0f), 0);
    EXPECT_NE(Remark(), first) << "a later failure replaces it";
}

TEST_F(Nodes, ThreeKindsOfThrownThings) {
    Open();
    doubles.Port().OnAccess([](bool write, int64_t, int64_t) {
        if (write)
            throw 31;
    });
    EXPECT_EQ(camera->SetBooleanNodePropertyValue("ReverseX", 1), 0);
    EXPECT_EQ(Remark(), "Error code:0x1f");
    doubles.Port().OnAccess([](bool write, int64_t, int64_t) {
        if (write)
            throw std::string("odd");
    });
    EXPECT_EQ(camera->SetBooleanNodePropertyValue("ReverseX", 1), 0);
    EXPECT_EQ(Remark(), "Unknow error.");
    doubles.Port().OnAccess({});
    doubles.Port().FailWrites(1, "the cable is out");
    EXPECT_EQ(camera->SetEnumerationNodePropertyValue("TriggerMode", 6), 0);
    EXPECT_NE(Remark().find("the cable is out"), std::string::npos) << Remark();
    doubles.Port().FailReads(1);
    long long l = 0;
    const std::string before = Remark();
    EXPECT_EQ(camera->GetIntegerNodePropertyValue("Width", &l), 0);
    EXPECT_EQ(Remark(), before) << "a reader records nothing";
}

TEST_F(Nodes, RemarkBuffers) {
    Open();
    camera->SetIntegerNodePropertyValue("Width", 9000);
    const std::string remark = Remark();
    char buffer[513] = {};
    EXPECT_EQ(camera->GetLastErrorRemark(nullptr, 513), nullptr);
    EXPECT_EQ(camera->GetLastErrorRemark(buffer, static_cast<int>(remark.size())), nullptr)
        << "not above its length";
    EXPECT_EQ(camera->GetLastErrorRemark(buffer, static_cast<int>(remark.size()) + 1), buffer);
    EXPECT_EQ(remark, buffer);
}

TEST_F(Nodes, ALongRemarkIsCut) {
    Open();
    doubles.Port().FailWrites(1, std::string(2000, 'e'));
    camera->SetIntegerNodePropertyValue("Width", 128);
    EXPECT_EQ(Remark().size(), 511u);
}

TEST_F(Nodes, TriggerModes) {
    Open();
    const std::pair<uint32_t, int> rows[] = {{6, 1}, {5, 0}, {7, 7}};
    for (const auto& [value, mode] : rows) {
        SetRegister(reg::TriggerMode, value);
        int read = -1;
        EXPECT_EQ(camera->GetTriggerMode(read), 1);
        EXPECT_EQ(read, mode) << value;
    }
}

TEST_F(Nodes, AcquisitionModes) {
    Open();
    const std::pair<uint32_t, int> rows[] = {{7, 2}, {8, 0}, {9, 1}, {10, 10}};
    for (const auto& [value, mode] : rows) {
        SetRegister(reg::AcquisitionMode, value);
        int read = -1;
        EXPECT_EQ(camera->GetAcquisitionMode(read), 1);
        EXPECT_EQ(read, mode) << value;
    }
}

TEST_F(Nodes, PixelFormats) {
    Open();
    OvGvspPixelType format = 0;
    EXPECT_EQ(camera->GetCurPixelFormat(format), 1);
    EXPECT_EQ(format, OV_GVSP_MONO8);
    SetRegister(reg::ImageCompressionMode, 1);
    EXPECT_EQ(camera->GetCurPixelFormat(format), 1);
    EXPECT_EQ(format, OV_GVSP_JPEG);
    SetRegister(reg::ImageCompressionMode, 0);
    doubles.Port().FailReads(100);
    EXPECT_EQ(camera->GetCurPixelFormat(format), 0);
    EXPECT_EQ(format, -1);
}

TEST_F(Nodes, HelperValues) {
    Open();
    float rate = 0;
    EXPECT_EQ(camera->GetResultFrameRate(&rate), 1);
    EXPECT_EQ(rate, 1000.0f);
    long long lines = 0;
    EXPECT_EQ(camera->GetResultLineRate(&lines), 1);
    EXPECT_EQ(lines, 51200);
    int cut = 0;
    EXPECT_EQ(camera->GetActualLineRate(cut), 1);
    EXPECT_EQ(cut, 51200);
    EXPECT_EQ(camera->GetCameraPacketSize(), 1496);
    int size = 0;
    EXPECT_EQ(camera->GetPixelSize(size), 1);
    EXPECT_EQ(size, 8);
    EXPECT_EQ(camera->GetCamScanType(), 0u);
    EXPECT_TRUE(camera->IsSuperSpeed()) << "1000 is above 999";
    SetRegister(reg::DeviceLinkSpeed, 999);
    EXPECT_FALSE(camera->IsSuperSpeed());
}

TEST_F(Nodes, HelperValuesOfACameraWithoutTheNodes) {
    Script(support::CameraXml({"GevSCPSPacketSize", "DeviceLinkSpeed", "DeviceScanType", "TLParamsLocked"}));
    Open();
    EXPECT_EQ(camera->GetCameraPacketSize(), -1);
    EXPECT_TRUE(camera->IsSuperSpeed()) << "a failed read counts as fast";
    EXPECT_EQ(camera->GetCamScanType(), 0xFFFFFFFFu);
    EXPECT_EQ(camera->GetCheckPacketSize(), -1);
    EXPECT_EQ(camera->XML_TLParamsLock(true), 0x80000100u);
}

TEST_F(Nodes, LockingOfTransportParameters) {
    Open();
    EXPECT_EQ(camera->XML_TLParamsLock(true), 0u);
    EXPECT_EQ(Register(reg::TLParamsLocked), 1u);
    EXPECT_EQ(camera->XML_TLParamsLock(false), 0u);
    EXPECT_EQ(Register(reg::TLParamsLocked), 0u);
    doubles.Port().FailWrites(1);
    EXPECT_EQ(camera->XML_TLParamsLock(true), 0u) << "swallowed";
    EXPECT_EQ(Remark(), "");
}

TEST_F(Nodes, LockOfAnotherKind) {
    Script(support::CameraXml({"TLParamsLocked"},
                              "<Boolean Name=\"TLParamsLocked\"><Value>0</Value></Boolean>"));
    Open();
    EXPECT_EQ(camera->XML_TLParamsLock(true), 0x80000100u);
}

// --- increments out of the XML
// ----------------------------------------------------------------------------------------------

std::string WithPacketSize(const std::string& increments) {
    return support::CameraXml(
        {"GevSCPSPacketSize"},
        "<Integer Name=\"GevSCPSPacketSize\"><Value>1500</Value><Min>576</Min><Max>9000</Max>" + increments +
            "</Integer><Integer Name=\"Step\"><Value>24</Value></Integer>");
}

TEST_F(Nodes, IncrementAsText) {
    Script(WithPacketSize("<Inc>0x10</Inc>"));
    QLocalCfg::Instance()->SetAutoCheckNetwork(false);
    Open();
    int increment = 1;
    EXPECT_TRUE(camera->GetPincNode("GevSCPSPacketSize", increment));
    EXPECT_EQ(increment, 16);
    EXPECT_FALSE(camera->GetPincNode("NoSuchNode", increment));
    EXPECT_FALSE(camera->GetPincNode("Height", increment)) << "has none";
    EXPECT_FALSE(camera->GetPincNode(nullptr, increment));
    EXPECT_EQ(increment, 16) << "left as it was";
}

TEST_F(Nodes, IncrementOfAnotherNode) {
    Script(WithPacketSize("<pInc>Step</pInc>"));
    QLocalCfg::Instance()->SetAutoCheckNetwork(false);
    Open();
    int increment = 1;
    EXPECT_TRUE(camera->GetPincNode("GevSCPSPacketSize", increment));
    EXPECT_EQ(increment, 24);
    doubles.SetResult("OV_CC_GetOptimalPacketSize", 1500);
    EXPECT_EQ(camera->GetCheckPacketSize(), (1500 - 576) / 24 * 24 + 576);
    doubles.SetResult("OV_CC_GetOptimalPacketSize", 20000);
    EXPECT_EQ(camera->GetCheckPacketSize(), (9000 - 576) / 24 * 24 + 576);
    doubles.SetResult("OV_CC_GetOptimalPacketSize", static_cast<uint32_t>(-1));
    EXPECT_EQ(camera->GetCheckPacketSize(), 576);
}

TEST_F(Nodes, AZeroIncrementIsNoDivision) {
    Script(support::CameraXml(
        {"GevSCPSPacketSize"},
        "<Integer Name=\"GevSCPSPacketSize\"><pValue>SizeVal</pValue><Min>576</Min><Max>9000</Max>"
        "<pInc>Zero</pInc></Integer><Integer Name=\"SizeVal\"><Value>1500</Value></Integer>"
        "<Integer Name=\"Zero\"><Value>0</Value></Integer>"));
    QLocalCfg::Instance()->SetAutoCheckNetwork(false);
    Open();
    EXPECT_EQ(camera->GetCheckPacketSize(), 1500);
}

// --- the XML itself
// ---------------------------------------------------------------------------------------------------------

TEST_F(Nodes, TheXmlIsSavedAsTheCameraGaveIt) {
    Open();
    const QString path = folder.filePath("camera.xml");
    EXPECT_TRUE(camera->SaveGenIcamXml(path));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll().toStdString(), support::CameraXml());
    EXPECT_FALSE(camera->SaveGenIcamXml(folder.filePath("missing/camera.xml")));
    EXPECT_FALSE(camera->SaveGenIcamXml(folder.path())) << "a folder";
}

TEST_F(Nodes, TheDocumentIsShared) {
    Open();
    QDomDocument document;
    camera->GetXMLDomDocument(document);
    EXPECT_EQ(document.documentElement().attribute("ModelName"), "Double");
    EXPECT_TRUE(camera->GetNodeMapRef());
}

// --- embedded selector
// ------------------------------------------------------------------------------------------------------

TEST_F(Nodes, EmbeddedSelectorIsTheWholeRegister) {
    Open();
    SetRegister(reg::FrameSpecInfoReg, 0x1FF);
    SetRegister(reg::FrameSpecInfoSelector, 1);
    camera->ParseEmbeddedSelector();
    long selector = 0;
    _EMBEDDED_IMAGE_INFO_ info{};
    camera->GetEmbeddedImageInfo(selector, info);
    EXPECT_EQ(selector, 0x1FF);
    EXPECT_EQ(Register(reg::FrameSpecInfoSelector), 1u) << "the probe leaves the node as it was";
    doubles.Port().FailReads(10);
    camera->ParseEmbeddedSelector();
    camera->GetEmbeddedImageInfo(selector, info);
    EXPECT_EQ(selector, 0x1FF) << "a failed read keeps the former one";
}

TEST_F(Nodes, ARefusedWhiteBalanceEntryChangesNothing) {
    Script(support::CameraXml({"FrameSpecInfoSelector"}));
    Open();
    SetRegister(reg::FrameSpecInfoReg, 0x10);
    camera->ParseEmbeddedSelector();
    long selector = 0;
    _EMBEDDED_IMAGE_INFO_ info{};
    camera->GetEmbeddedImageInfo(selector, info);
    EXPECT_EQ(selector, 0x10) << "in the end the register counts";
}

TEST_F(Nodes, CharactersAsNumbers) {
    EXPECT_EQ(QCamera::Char2Int('0'), 0);
    EXPECT_EQ(QCamera::Char2Int('9'), 9);
    EXPECT_EQ(QCamera::Char2Int('A'), 17);
}

} // namespace
