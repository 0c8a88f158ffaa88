#include "support/CameraXml.h"

#include <cstring>
#include <utility>
#include <vector>

namespace support {

namespace {

namespace reg = camera_register;

std::string Register(const char* kind, const std::string& name, int64_t address, int length) {
    return std::string("<") + kind + " Name=\"" + name + "Val\"><Address>" + std::to_string(address) +
           "</Address><Length>" + std::to_string(length) +
           "</Length><AccessMode>RW</AccessMode><pPort>Device</pPort><Cachable>NoCache</Cachable>" +
           (std::strcmp(kind, "StringReg") == 0 ? ""
            : kind == std::string("IntReg")     ? "<Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess>"
                                                : "<Endianess>LittleEndian</Endianess>") +
           "</" + kind + ">";
}

std::string Integer(const std::string& name, int64_t address, const std::string& more = {}) {
    return "<Integer Name=\"" + name + "\"><pValue>" + name + "Val</pValue>" + more + "</Integer>" +
           Register("IntReg", name, address, 4);
}

std::string Float(const std::string& name, int64_t address, const std::string& more = {}) {
    return "<Float Name=\"" + name + "\"><pValue>" + name + "Val</pValue>" + more + "</Float>" +
           Register("FloatReg", name, address, 8);
}

std::string Enumeration(const std::string& name, int64_t address,
                        const std::vector<std::pair<std::string, uint32_t>>& entries) {
    std::string xml = "<Enumeration Name=\"" + name + "\">";
    for (const auto& [symbol, value] : entries)
        xml += "<EnumEntry Name=\"" + symbol + "\"><Value>" + std::to_string(value) + "</Value></EnumEntry>";
    return xml + "<pValue>" + name + "Val</pValue></Enumeration>" + Register("IntReg", name, address, 4);
}

std::vector<std::pair<std::string, std::string>> Features() {
    return {
        {"Width", Integer("Width", reg::Width, "<Min>16</Min><Max>8192</Max><Inc>4</Inc>")},
        {"Height", Integer("Height", reg::Height, "<Min>2</Min><Max>8192</Max>")},
        {"PixelFormat", Enumeration("PixelFormat", reg::PixelFormat,
                                    {{"Mono8", 0x01080001},
                                     {"Mono10", 0x01100003},
                                     {"Mono12", 0x01100005},
                                     {"Mono12Packed", 0x010C0006},
                                     {"BayerRG8", 0x01080009},
                                     {"BayerRG12", 0x01100011},
                                     {"BayerRG12Packed", 0x010C002B},
                                     {"RGB8", 0x02180014},
                                     {"UYVY", 0x0210001F},
                                     {"YUYV", 0x02100032},
                                     {"Strange", 0x01100025}})},
        {"PixelSize", Enumeration("PixelSize", reg::PixelSize,
                                  {{"Bpp8", 8}, {"Bpp12", 12}, {"Bpp16", 16}, {"Bpp24", 24}})},
        {"PayloadSize", Integer("PayloadSize", reg::PayloadSize)},
        {"TLParamsLocked", Integer("TLParamsLocked", reg::TLParamsLocked, "<Min>0</Min><Max>1</Max>")},
        {"GevSCPSPacketSize",
         Integer("GevSCPSPacketSize", reg::PacketSize, "<Min>576</Min><Max>9000</Max><Inc>8</Inc>")},
        {"TriggerMode", Enumeration("TriggerMode", reg::TriggerMode, {{"Off", 5}, {"On", 6}, {"Burst", 7}})},
        {"AcquisitionMode",
         Enumeration("AcquisitionMode", reg::AcquisitionMode,
                     {{"Continuous", 7}, {"SingleFrame", 8}, {"MultiFrame", 9}, {"Other", 10}})},
        {"ImageCompressionMode",
         Enumeration("ImageCompressionMode", reg::ImageCompressionMode, {{"Off", 0}, {"JPEG", 1}})},
        {"TriggerSoftware", "<Command Name=\"TriggerSoftware\"><pValue>TriggerSoftwareVal</pValue>"
                            "<CommandValue>1</CommandValue></Command>" +
                                Register("IntReg", "TriggerSoftware", reg::TriggerSoftware, 4)},
        {"ReverseX", "<Boolean Name=\"ReverseX\"><pValue>ReverseXVal</pValue></Boolean>" +
                         Register("IntReg", "ReverseX", reg::ReverseX, 4)},
        {"ResultingFrameRate", Float("ResultingFrameRate", reg::ResultingFrameRate)},
        {"ExposureTime", Float("ExposureTime", reg::ExposureTime, "<Min>10</Min><Max>1000000</Max>")},
        {"FrameSpecInfo", "<Boolean Name=\"FrameSpecInfo\"><pValue>FrameSpecInfoVal</pValue></Boolean>" +
                              Register("IntReg", "FrameSpecInfo", reg::FrameSpecInfo, 4)},
        {"FrameSpecInfo_Reg", Integer("FrameSpecInfo_Reg", reg::FrameSpecInfoReg)},
        {"FrameSpecInfoSelector", Enumeration("FrameSpecInfoSelector", reg::FrameSpecInfoSelector,
                                              {{"Timestamp", 0}, {"Gain", 1}, {"WhiteBalance", 4}})},
        {"DeviceScanType",
         Enumeration("DeviceScanType", reg::DeviceScanType, {{"Areascan", 0}, {"Linescan", 1}})},
        {"DeviceLinkSpeed", Integer("DeviceLinkSpeed", reg::DeviceLinkSpeed)},
        {"ResultingLineRate", Integer("ResultingLineRate", reg::ResultingLineRate)},
        {"DeviceUserID", "<StringReg Name=\"DeviceUserID\"><Address>" + std::to_string(reg::DeviceUserID) +
                             "</Address><Length>16</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>"
                             "<Cachable>NoCache</Cachable></StringReg>"},
    };
}

} // namespace

std::string CameraXml(const std::set<std::string>& without, const std::string& extra) {
    std::string list;
    std::string nodes;
    for (const auto& [name, xml] : Features()) {
        if (without.count(name))
            continue;
        list += "<pFeature>" + name + "</pFeature>";
        nodes += xml;
    }
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
           "<RegisterDescription ModelName=\"Double\" VendorName=\"Kolt\" ToolTip=\"\" "
           "StandardNameSpace=\"GEV\" "
           "SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\" SchemaSubMinorVersion=\"0\" MajorVersion=\"1\" "
           "MinorVersion=\"0\" "
           "SubMinorVersion=\"0\" ProductGuid=\"11111111-2222-3333-4444-555555555555\" "
           "VersionGuid=\"66666666-7777-8888-9999-000000000000\" "
           "xmlns=\"http://www.genicam.org/GenApi/Version_1_1\">"
           "<Category Name=\"Root\">" +
           list + "</Category>" + nodes + extra + "<Port Name=\"Device\"/></RegisterDescription>";
}

void FillCameraRegisters(MemoryPort& port) {
    const auto set = [&port](int64_t address, uint64_t value) {
        port.StoreInteger(address, 4, value, MemoryPort::Order::Little);
    };
    const auto setFloat = [&port](int64_t address, double value) {
        uint64_t bits = 0;
        std::memcpy(&bits, &value, sizeof bits);
        port.StoreInteger(address, 8, bits, MemoryPort::Order::Little);
    };
    set(reg::Width, 64);
    set(reg::Height, 48);
    set(reg::PixelFormat, 0x01080001);
    set(reg::PixelSize, 8);
    set(reg::PayloadSize, 64 * 48);
    set(reg::PacketSize, 1500);
    set(reg::TriggerMode, 5);
    set(reg::AcquisitionMode, 7);
    set(reg::DeviceLinkSpeed, 1000);
    set(reg::ResultingLineRate, 51200);
    setFloat(reg::ResultingFrameRate, 1000.0);
    setFloat(reg::ExposureTime, 10000.0);
    port.StoreText(reg::DeviceUserID, 16, "east");
}

} // namespace support
