// Features of chunk data: facts that follow the picture.
#include "Device/DeviceModel.h"
#include "Device/FeatureRegisters.h"

#include <cstdio>

namespace vcam {

using namespace feature;

namespace {

struct ChunkFeature {
    const char* name;
    const char* selector;
    bool isFloat;
    const char* tip;
};

constexpr ChunkFeature kChunks[kChunkCount] = {
    {"ChunkFrameID", "FrameID", false, "Number of the frame."},
    {"ChunkTimestamp", "Timestamp", false, "Ticks at the start of the exposure."},
    {"ChunkExposureTime", "ExposureTime", true, "Exposure time in microseconds."},
    {"ChunkGain", "Gain", true, "Gain in decibels."},
};

} // namespace

void DeviceModel::DefineChunks(FeatureBuilder& build) {
    build.Category("ChunkDataControl");
    build.Boolean("ChunkModeActive", kChunkModeActive, false, Access::ReadWrite)
        .Tip("Facts about a frame follow its picture.")
        .Visible("Expert")
        .Locked()
        .OnWrite(Changed())
        .Setting();
    std::vector<EnumValue> entries;
    for (uint32_t chunk = 0; chunk < kChunkCount; ++chunk)
        entries.push_back({kChunks[chunk].selector, chunk});
    build.Enumeration("ChunkSelector", kChunkSelector, 0, Access::ReadWrite, entries)
        .Tip("The chunk that ChunkEnable belongs to.")
        .Visible("Expert")
        .Setting();
    build.Boolean("ChunkEnable", kChunkEnable, true, Access::ReadWrite)
        .Per("ChunkSelector", kChunkCount, 4)
        .Tip("Whether the chunk is sent.")
        .Visible("Expert")
        .Locked()
        .OnWrite(Changed())
        .Setting();
    DefineChunkValues(build);
}

// Their values lie in the frame, behind a port of their own.
void DeviceModel::DefineChunkValues(FeatureBuilder& build) {
    for (uint32_t chunk = 0; chunk < kChunkCount; ++chunk) {
        const std::string name = kChunks[chunk].name;
        const bool isFloat = kChunks[chunk].isFloat;
        build.Xml().List("ChunkDataControl", name);
        build.Xml()
            .Node(isFloat ? "Float" : "Integer", name)
            .Add("ToolTip", kChunks[chunk].tip)
            .Add("Description", kChunks[chunk].tip)
            .Add("DisplayName", DisplayNameOf(name))
            .Add("Visibility", "Expert")
            .Add("pValue", name + "_Val");
        XmlNode& value = build.Xml().Node(isFloat ? "FloatReg" : "IntReg", name + "_Val");
        value.Add("Address", "0").Add("Length", 8).Add("AccessMode", "RO").Add("pPort", name + "Port");
        value.Add("Cachable", "NoCache").Add("Endianess", "BigEndian");
        if (!isFloat)
            value.Add("Sign", "Unsigned");
        char id[16];
        std::snprintf(id, sizeof id, "%08X", kFirstChunkId + chunk);
        build.Xml().Node("Port", name + "Port").Add("ChunkID", id);
    }
}

} // namespace vcam
